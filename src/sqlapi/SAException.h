#pragma once

#include <exception>
#include <string>

/// Who noticed the error.
enum SAErrorClass_t {
    SA_NoError,             ///< no error
    SA_UserGenerated_Error, ///< raised by the program itself, e.g. a numbered application error
    SA_Library_Error,       ///< this library: unknown parameter, not connected, value of the wrong kind
    SA_DBMS_API_Error       ///< the engine or its client library
};

/// What went wrong in words common to both engines, so that callers never compare engine codes.
enum class SAFault {
    Other,
    RelationNotFound, ///< a query names a table or view that does not exist (the engines do not say which of the two)
    TableNotFound,    ///< the statement was about a table as such (DROP TABLE, ALTER TABLE)
    ViewNotFound,     ///< the statement was about a view as such (DROP VIEW)
    UniqueViolation,
    ForeignKeyViolation,
    CheckViolation,
    NotNullViolation,
    Busy,           ///< another station holds the lock and did not let go in time; deadlock, serialization failure
    ConnectionLost, ///< the server went away
    CannotOpen,     ///< wrong address, missing file, no permission, wrong password
    DiskFull,
    ReadOnly,
    Corrupt, ///< not a database, or a damaged one
    Changed  ///< the record was changed or deleted by another station since it was read
};

/// The one exception of database work: every failure of an engine and every misuse of this library.
/// Thrown by value, caught by reference around a unit of work and shown with SAExceptionDisplay.
class SAException : public std::exception {
  public:
    SAException(SAErrorClass_t error_class, long native_code, std::string text, SAFault fault = SAFault::Other)
        : class_(error_class), native_code_(native_code), text_(std::move(text)), fault_(fault)
    {
    }

    SAErrorClass_t ErrClass() const { return class_; }

    /// SQLite: the extended result code. PostgreSQL: the five-character SQLSTATE read as a number in base 36.
    /// Application errors: their number (for example 20060).
    long ErrNativeCode() const { return native_code_; }

    /// The engine's own message, or this library's, in plain text without a trailing line end.
    const std::string &ErrText() const { return text_; }

    SAFault Fault() const { return fault_; }

    const char *what() const noexcept override { return text_.c_str(); }

  private:
    SAErrorClass_t class_;
    long native_code_;
    std::string text_;
    SAFault fault_;
};
