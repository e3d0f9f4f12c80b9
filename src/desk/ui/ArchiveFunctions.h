#pragma once

class QWidget;

/// Checks the whole archive of the current company and shows what is wrong in a list.
void CheckArchiveOf(QWidget *parent);

/// Asks for a file and writes a copy of the current company's archive there.
void CopyArchiveToPickedFile();

/// Asks for a year and moves the company there. @return true when it was changed
bool ChangeYearOf(QWidget *parent);
