#pragma once

#include "bench/Bare.h"
#include "bench/BareValues.h"
#include "sqlapi/SAConnection.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

/// A session of the bare client library with prepared statements, one text for both engines: parameters are "$1", "$2"
/// in the order in which they stand.
class BareClient {
  public:
    virtual ~BareClient() = default;

    /// Prepares once. @return number of the statement
    virtual std::size_t Prepare(const std::string &text) = 0;
    /// First value of the first row as a number, 0 when there is none; the other values are read and let go.
    virtual long long Ask(std::size_t statement, std::span<const BareValue> values) = 0;
    /// First value of the first row as bytes.
    virtual std::string AskBytes(std::size_t statement, std::span<const BareValue> values) = 0;
    virtual void Do(std::size_t statement, std::span<const BareValue> values) = 0;

    /// Takes the lock of a series of numbers too, as whoever numbers by himself must.
    virtual void Begin(int series) = 0;
    virtual void Commit() = 0;
};

std::unique_ptr<BareClient> OpenBareClient(SAEngine engine, const std::string &target);
