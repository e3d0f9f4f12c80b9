#pragma once

#include "tarvodlg/widgets/Theme.h"

class QWidget;

// What this station remembers of the desk's looks, in desk.ini of the user's configuration folder.

Theme StoredTheme();
void StoreTheme(Theme theme);

/// Gives the window the place and size it was left with, if that is on a screen that exists; else a comfortable size in
/// the middle of the first one.
void RestoreWindow(QWidget *window);
void StoreWindow(const QWidget *window);
