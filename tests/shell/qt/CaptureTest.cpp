// SPDX-License-Identifier: GPL-3.0-or-later
// A session of the window recorded as the program records it (the real widgets, clock and port, on
// a pseudo-terminal with the simulated radio), then read back by tshark with our dissector.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "diagnostics/CapturingSerial.h"
#include "platform/PosixSerial.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtServices.h"
#include "shell/qt/MainWindow.h"
#include "simradio/SimRadio.h"
#include "support/WindowHarness.h"

namespace tarn::test {
namespace {

// Polls, a set frequency and its OK, a new speed, then a reply cut by a jam code and followed by
// noise.
void RecordSession(const std::string& path, const std::string& folder, sim::PtyRadio& radio) {
  QtClock clock;
  QtLog log;
  QtMessages messages;
  QtFileChooser files({});
  PosixSerialDriver serial;
  FixedPortCatalog ports({{"sim", radio.SlavePath()}});
  BusCapture capture(::open(path.c_str(), O_WRONLY | O_CREAT, 0600), true, "test",
                     BusCapture::WallClock);
  CapturingDriver capturing(serial, capture);
  App app;
  IcomWindow w(app, WindowServices{clock, ports, capturing, log, messages, files, folder});
  MainWindow view(w);
  view.ShowAndStart();
  w.DebugCheckBox.SetValue(true);  // DEBUG.TXT: every byte read, for the invariant
  const auto waitFor = [](auto done) { ASSERT_TRUE(QTest::qWaitFor(done, 20000)); };
  waitFor([&w] { return w.ModeDisplay.Text() != "-"; });  // the poll: frequency, then mode
  QTest::keyClicks(view.Client()->findChild<QWidget*>("EditFreq"), "14250\r");
  waitFor([&w] { return w.gotAckNak; });
  QTest::keyClick(view.Client()->findChild<QWidget*>("BaudPopup"), Qt::Key_Down);  // a new speed
  radio.WithBus([](sim::SimBus& bus) { bus.Options() = {.jamInReplies = true, .noiseBytes = 4}; });
  w.ReqFreq(8);
  waitFor([&w] { return w.StaticJamming.Visible(); });
  QTest::qWait(200);  // the noise behind it
}

TEST(Capture, TsharkDecodesARecordedSessionWithOurDissector) {
  const QTemporaryDir dir;
  const std::string path = dir.filePath("bus.pcapng").toStdString();
  std::string why;
  const std::unique_ptr<sim::PtyRadio> radio = sim::PtyRadio::OpenPty({}, why);
  ASSERT_NE(radio, nullptr) << why;
  radio->WithBus([](sim::SimBus& bus) { bus.AddRadio(sim::RadioState{}); });
  radio->StartThread();
  RecordSession(path, dir.path().toStdString(), *radio);

  QStringList args{"-r", QString::fromStdString(path), "-Tfields", "-Eseparator=|",
                   "-Xlua_script:" TARNLINE_SOURCE_DIR "/tools/wireshark/civ.lua"};
  for (const char* field : {"frame.p2p_dir", "civ.frame", "civ.outside", "civ.cmd", "civ.freq",
                            "civ.mode", "civ.filter", "civ.ack", "civ.response_time",
                            "_ws.expert.message", "frame.interface_description"})
    args << "-e" << field;
  QProcess tshark;
  tshark.start("tshark", args);
  ASSERT_TRUE(tshark.waitForFinished(60000));
  ASSERT_EQ(tshark.exitCode(), 0) << tshark.readAllStandardError().toStdString();
  // Each direction's records end to end, and what tshark made of each record.
  QString in, out, seen;
  for (const QString& line : QString(tshark.readAllStandardOutput()).split('\n')) {
    const QStringList c = line.split('|');
    if (c.size() < 11) continue;
    (c[0] == "0" ? out : in) += c[1] + c[2];
    seen +=
        c[0] + " " + c.mid(3, 5).join(' ') + (c[8].isEmpty() ? "\n" : " paired\n") + c[9] + c[10];
  }
  for (const char* expected :
       {"0 0x05 14250049   \n", "1 0xfb    0xfb paired\n", "1 0x03 145500000    paired\n",
        "1 0x04  0x05 1  paired\n", "Jam code at byte", "Frame without its end byte",
        "Bytes outside any frame", "Serial Port sim at 9600 baud, 8N1",
        "Serial Port sim at 14400 baud, 8N1"})
    EXPECT_TRUE(seen.contains(expected)) << expected << " not in\n" << seen.toStdString();
  QFile debugFile(dir.filePath("DEBUG.TXT"));
  ASSERT_TRUE(debugFile.open(QIODevice::ReadOnly));
  EXPECT_EQ(in.toUpper(), QString(debugFile.readAll()).remove('_'));
  QString sent;  // the frames the radio saw, which were all the program wrote
  radio->WithBus([&sent](sim::SimBus& bus) {
    for (const sim::SeenFrame& f : bus.Frames())
      sent += QByteArray::fromStdString(Bytes({0xFE, 0xFE, f.to, f.from, f.command}) + f.data +
                                        Bytes({0xFD}))
                  .toHex();
  });
  EXPECT_EQ(out, sent);
}

}  // namespace
}  // namespace tarn::test
