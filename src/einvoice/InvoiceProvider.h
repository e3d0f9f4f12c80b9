#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// One file that a provider has for the company.
struct ProvidedFile {
    std::string name;        ///< what tells it from the provider's other files: a path, parts parted by '/'
    std::string version;     ///< what changes when its content does: size and time, a tag; empty = cannot be told
    std::string fault;       ///< why it cannot be had, in Italian; it is then not read
    bool is_ready = true;    ///< false: still being written, to be looked at the next time
    bool is_settled = false; ///< unchanged for so long that what is missing of it will not come any more
};

/// Where received invoices, the exchange system's notifications and readable documents come from: a folder, or the
/// service of an intermediary. It keeps no account of what was taken up: the archive does.
class InvoiceProvider {
  public:
    /// Whether a file was looked at in this state.
    using KnownFile = std::function<bool(std::string_view name, std::string_view version)>;

    virtual ~InvoiceProvider() = default;

    /// The files that are not known yet, in the order of their names. @throws FileError when the provider is not there
    virtual std::vector<ProvidedFile> ListNew(const KnownFile &is_known) = 0;

    /// The bytes of a listed file. @throws FileError
    virtual std::string Read(const ProvidedFile &file) = 0;

    /// True when a listed file is still what it was when it was listed, so that the bytes read are a whole.
    virtual bool IsUnchanged(const ProvidedFile &file) = 0;

    /// Called once a file is stored in the archive for good; a service may then stop offering it.
    virtual void Acknowledge(const ProvidedFile &file) = 0;
};
