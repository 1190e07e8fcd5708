// SPDX-License-Identifier: GPL-3.0-or-later
// SIGINT (Ctrl+C in the terminal) and SIGTERM quit through File > Quit, as a user would: the port
// is closed and the demo radio stopped on the way out, and the exit status is 0.
#pragma once

class QAction;

namespace tarn {

// `quit` is triggered on the event loop, never inside the signal handler. False when the signals
// could not be taken over; they then keep their default action.
bool QuitOnSignals(QAction& quit);

}  // namespace tarn
