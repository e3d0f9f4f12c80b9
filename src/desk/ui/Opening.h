#pragma once

#include <QString>
#include <string>

class QWidget;

// The ways to an open company. Each remembers the company it opened; the company open before stays when one fails.

/// Opens an archive as the current company, asking for a password when its server wants one that nobody gave.
/// @param reason  why it could not be opened, in Italian; empty when the user cancelled
bool OpenArchiveAsking(QWidget *parent, const std::string &archive, QString *reason);

/// Lets the user choose among the known companies, or name a folder or an address. @return true when one was opened
bool OpenAnotherCompany(QWidget *parent);

/// Asks for a new company and creates it. @return true when it was created; then it is open
bool MakeNewCompany(QWidget *parent);

/// Opens the demo company of this user, made first when it is missing. @return true when it is open
bool OpenDemoCompany(QWidget *parent);

/// Puts the current company first among the known ones.
void RememberCurrentCompany(const std::string &archive);

/// Puts a password asked from the user into the address of a server that wants one.
/// @return false when cancelled or the server cannot be reached, which was shown then
bool AskForMissingPassword(QWidget *parent, std::string *address);

/// A PostgreSQL address asked from the user, empty when cancelled.
std::string AskForAddress(QWidget *parent);
