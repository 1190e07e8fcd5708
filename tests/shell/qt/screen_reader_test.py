#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
# The real program on the port of the simulated radio, as a screen reader sees it over a real
# AT-SPI bus. Prints the tree it finds and checks every control against one table, with the labels
# tied to it. Tunes the radio through the window as a screen reader user would: the frequency
# display tells its new text once, and not again for the polls that repeat it; a lost port is told
# once. Meanwhile the program prints its displays at once and at each change (--print-changes), and
# SIGTERM ends it as File > Quit does. Runs inside a D-Bus session, with a standard input (an X
# server started without one takes no connections), and starts its own X server:
#   dbus-run-session -- screen_reader_test.py TARNLINE SIMRADIO < /dev/null
import os
import random
import subprocess
import sys
import time

import pyatspi
from gi.repository import GLib

PATIENCE_S = 60  # a failure bound only

# Every child of the window's client area but the labels, in the order of creation: role, name,
# description, and the texts of the labels tied to it.
HEX, RECEIVED = "in hex", "under Received data"
TABLE = [
    ("combo box", "Serial Port", "", ["Serial Port:"]),
    ("text", "Received data",
     "Received bytes in hex while Show Data is on, and the addresses Find All Radios found", []),
    ("combo box", "Baud Rate", "", ["Baud Rate:"]),
    ("text", "Our ID", "The bus address of this controller, " + HEX, ["Our ID:"]),
    ("check box", "Show Data", "Shows received bytes in hex " + RECEIVED, []),
    ("push button", "Find All Radios", "Asks every bus address from 0 to 255, one a second, and "
     "lists " + RECEIVED + " each one after which a radio answered; takes 4 minutes 19 seconds", []),
    ("label", "-", "", []),  # StaticBuf, never shown
    ("check box", "Debug", "Appends received bytes in hex to DEBUG.TXT", []),
    ("label", "Jam code", "Shows for a second when a jam code comes over the bus", []),
    ("label", "Radio search", "The bus address Find All Radios is asking", []),
    ("text", "Frequency to set", "In the Frequency unit; Return or Set sends it", ["Freq:"]),
    ("push button", "Set", "", []),
    ("combo box", "Frequency unit", "", []),
    ("label", "Frequency", "The radio's frequency in kHz", ["Freq:"]),
    ("label", "Mode", "", ["Mode:"]),
    ("label", "Filter", "", []),
    ("text", "Radio ID", "The bus address of the radio, " + HEX, ["Radio ID:", "Hex"]),
    ("combo box", "Bytes", "How many bytes a frequency takes on the bus", ["Bytes:"]),
    ("combo box", "Mode to set", "Sent to the radio with the filter as it is chosen", []),
    ("combo box", "Filter to set", "Sent to the radio with the mode as it is chosen", []),
    ("text", "Update rate", "One full polling cycle, in milliseconds", ["Update rate:"]),
]
PRINTED = ["Freq: -  Mode: -  Filter: -", "Freq: 145500  Mode: -  Filter: -",
           "Freq: 145500  Mode: FM  Filter: -", "Freq: 145500  Mode: FM  Filter: WIDE",
           "Freq: 7100.049  Mode: FM  Filter: WIDE"]


def pump_until(done, what):
    ctx, deadline = GLib.MainContext.default(), time.monotonic() + PATIENCE_S
    while time.monotonic() < deadline:
        while ctx.pending():
            ctx.iteration(False)
        found = done()
        if found:
            return found
        time.sleep(0.1)
    sys.exit("FAIL: no %s within %d s" % (what, PATIENCE_S))


def related(acc, kind):
    return [t.name for r in acc.getRelationSet() if r.getRelationType() == kind
            for t in (r.getTarget(i) for i in range(r.getNTargets()))]


def find_client():
    apps = [a for a in pyatspi.Registry.getDesktop(0) if a and a.name == "Tarnline"]
    frames = [f for a in apps for f in a if f.name == "Tarnline Interface"]
    return max(frames[0], key=lambda c: c.childCount) if frames else None


# A display far from the usual ones, so that X servers of other test runs are unlikely to hold it;
# Xvfb ends at once on a display in use, and another is tried. It says the display once it takes
# connections.
def start_x_server():
    for display in random.sample(range(1000, 30000), 5):
        readable, writable = os.pipe()
        server = subprocess.Popen(["Xvfb", ":%d" % display, "-displayfd", str(writable),
                                   "-nolisten", "tcp"], pass_fds=[writable])
        os.close(writable)
        if os.read(readable, 16):
            os.environ["DISPLAY"] = ":%d" % display
            return server
    sys.exit("FAIL: no X server")


def main():
    x_server = start_x_server()
    bus = subprocess.Popen(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])
    radio = subprocess.Popen([sys.argv[2]], stdout=subprocess.PIPE, text=True)
    env = dict(os.environ, QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
               QT_LOGGING_RULES="tarnline.debuglog=false")
    port = radio.stdout.readline().strip()
    for attempt in range(3):  # now and then the program finds no X server and ends at once
        program = subprocess.Popen([sys.argv[1], "--port=" + port,
                                    "--status-after", "0", "--print-changes"],
                                   env=env, stdout=subprocess.PIPE, text=True)
        try:
            program.wait(5)
        except subprocess.TimeoutExpired:
            break
    try:
        client = pump_until(find_client, "Tarnline window on the AT-SPI bus")
        told = []
        pyatspi.Registry.registerEventListener(
            lambda e: told.append((e.type, e.source.name, e.any_data)),
            "object:text-changed:insert", "object:property-change:accessible-name")
        controls = {c.name: c for c in client}
        rows = [(c, related(c, pyatspi.RELATION_LABEL_FOR)) for c in client]
        seen = [(c.getRoleName(), c.name, c.description,
                 related(c, pyatspi.RELATION_LABELLED_BY)) for c, tos in rows]
        print(*(" | ".join(map(str, r + ("label for", tos) * bool(tos)))
                for r, (c, tos) in zip(seen, rows)), sep="\n")
        faults = [] if [r for r, (c, tos) in zip(seen, rows) if not tos] == TABLE else ["table"]
        faults += [(c.name, to) for c, tos in rows for to in tos
                   if c.name not in related(controls[to], pyatspi.RELATION_LABELLED_BY)]
        filter_shown = controls["Filter"].queryText()
        pump_until(lambda: filter_shown.getText(0, -1) == "WIDE", "first poll of the radio")
        controls["Frequency to set"].queryEditableText().setTextContents("7100")
        controls["Set"].queryAction().doAction(0)  # Press
        news = ("object:text-changed:insert", "Frequency", "7100.049")
        pump_until(lambda: news in told, "text change of the frequency display")
        controls["Show Data"].queryAction().doAction(0)  # Toggle: shows the polls that follow
        monitor = controls["Received data"].queryText()
        pump_until(lambda: monitor.getText(0, -1).count("FE_FE_E0_08_03_") >= 2, "two more polls")
        radio.terminate()
        lost = "Serial port %s is gone: choose it again under Serial Port once it is back." % port
        gone = lambda: [t for t in told if t[1] == lost]
        faults += [n for n in [told.count(news), len(pump_until(gone, "lost port"))] if n != 1]
        print("told:", *told, sep="\n  ")
        program.terminate()
        printed = program.communicate(timeout=PATIENCE_S)[0].splitlines()
        if (printed, program.returncode) != (PRINTED, 0):
            faults.append((printed, program.returncode))
        if faults:
            sys.exit("FAIL: %s" % faults)
    finally:
        program.kill()
        radio.terminate()
        bus.terminate()
        x_server.terminate()


if __name__ == "__main__":
    main()
