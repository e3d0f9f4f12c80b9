#pragma once

#include <QString>
#include <vector>

struct DialogCommand;
class QWidget;

/// The window of F1: the keys of a dialog's commands and those that hold everywhere.
void ShowDialogHelp(QWidget *parent, const QString &title, const std::vector<DialogCommand> &commands);

/// A key as it stands on an Italian keyboard: "PgUp" is "Pag↑".
QString KeyName(const QString &shortcut);
/// The caption without its key and without the mark of the mnemonic: "Salva" of "F2 - &Salva".
QString PlainCaption(const QString &caption);
/// What a button of the command says when the mouse rests on it, its shortcut included.
QString TooltipOf(const DialogCommand &command);
