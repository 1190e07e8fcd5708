// SPDX-License-Identifier: GPL-3.0-or-later
// What a screen reader is given beyond Qt's own accessible widgets.
//
// Qt names a label by its text and a combo box (on Linux) by its current row, so neither can keep
// a name of its own. A label or combo box given an accessible name gets an interface that keeps
// it: a named label is a display whose text is read through the text interface, a named combo box
// says its row as its value.
#pragma once

#include <QString>

class QLabel;
class QWidget;

namespace tarn {

// Installs the interfaces above; once per process, before a named widget is first asked for.
void InstallNamedWidgetAccessibility();

// Tells a screen reader that a display now shows `now` in place of `before`.
void TellTextChanged(QLabel& display, const QString& before, const QString& now);
// Tells a screen reader that something it must hear at once has appeared.
void TellAlert(QWidget& widget);

}  // namespace tarn
