// SPDX-License-Identifier: GPL-3.0-or-later
// The window, on the real clock, reaching the simulated radio and a bare pseudo-terminal through a
// real ser2net on 127.0.0.1: raw TCP, RFC 2217 and TLS, a far end that goes, and ports that
// refuse or never answer.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <fstream>

#include "platform/GensioSerial.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtServices.h"
#include "shell/qt/MainWindow.h"
#include "simradio/SimRadio.h"
#include "support/Recording.h"

namespace tarn::test {
namespace {

// A listening socket on 127.0.0.1; `backlog` 0 with one connection waiting drops every later SYN.
int Listen(int backlog, int& port, bool fill = false) {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0), waiting = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in a{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
  socklen_t size = sizeof a;
  ::bind(fd, reinterpret_cast<sockaddr*>(&a), size), ::listen(fd, backlog);
  ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &size);
  if (fill) ::connect(waiting, reinterpret_cast<sockaddr*>(&a), size);
  port = ntohs(a.sin_port);
  return fd;
}

std::string FreePort() {
  int port = 0;
  return ::close(Listen(1, port)), std::to_string(port);
}

// The speed of a tty in baud, custom ones too: the last field of Linux's termios2 (TCGETS2), which
// <asm/termbits.h> would name if it could share a file with <termios.h>.
int SpeedOf(const std::string& path) {
  std::uint32_t tio[11] = {};
  const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
  return ::ioctl(fd, _IOR('T', 0x2A, tio), tio), ::close(fd), static_cast<int>(tio[10]);
}

template <class F>
bool Eventually(F f) {
  return QTest::qWaitFor(f, 15000);  // a failure bound only
}

bool SawFrequencySet(sim::SimBus& bus) {
  return std::ranges::any_of(bus.Frames(), [](const sim::SeenFrame& f) {
    return f.command == 0x05 && f.data == std::string("\x49\x00\x25\x14", 4);  // 14250 kHz
  });
}

TEST(NetworkPorts, ReachTheRadioThroughSer2net) {
  static LineDriver lines;  // one per process: it holds gensio's thread
  QTemporaryDir dir;
  const std::string d = dir.path().toStdString() + "/";
  const std::string req = "openssl req -x509 -newkey rsa:2048 -nodes -subj /CN=x -keyout " + d;
  for (const std::string n : {"good", "wrong"})
    ASSERT_EQ(std::system((req + n + ".key -out " + d + n + ".pem 2>/dev/null").c_str()), 0);
  // A radio for each of raw TCP, RFC 2217 and TLS (ser2net lets one accepter at a time have a
  // device, and holds it a while after a connection closes), and a bare pty for the speeds.
  std::unique_ptr<sim::PtyRadio> radios[3];
  std::string why, devices[4], at[4], ssl = "telnet(rfc2217),ssl(key=" + d + "good.key,cert=" + d;
  for (int i = 0; i < 3; ++i) {
    radios[i] = sim::PtyRadio::OpenPty(sim::BusOptions{}, why);
    radios[i]->WithBus([](sim::SimBus& bus) { bus.AddRadio(sim::RadioState{}); });
    radios[i]->StartThread();
    devices[i] = radios[i]->SlavePath();
  }
  int bare = -1, bareKeep = -1, silent = 0;
  char barePath[64];
  ::openpty(&bare, &bareKeep, barePath, nullptr, nullptr);  // ser2net makes it raw
  ::fcntl(bare, F_SETFL, O_NONBLOCK);
  devices[3] = barePath;
  const std::string stacks[] = {"tcp", "telnet(rfc2217),tcp", ssl + "good.pem),tcp",
                                "telnet(rfc2217),tcp"};
  std::ofstream yaml(d + "ser2net.yaml");
  for (int i = 0; i < 4; ++i)  // a new connection takes the port from one ser2net still holds
    yaml << "connection: &c" << i << "\n  accepter: " << stacks[i] << ",127.0.0.1,"
         << (at[i] = FreePort()) << "\n  connector: serialdev," << devices[i]
         << ",9600n81,local\n  options:\n    kickolduser: true\n";
  yaml.close();
  QProcess ser2net;
  ser2net.start("/usr/sbin/ser2net", {"-n", "-c", QString::fromStdString(d + "ser2net.yaml")});
  ASSERT_TRUE(ser2net.waitForStarted());
  const int listener = Listen(0, silent, true);
  ssl = "gensio:telnet(rfc2217),ssl(CA=" + d;
  const std::string tls = "),tcp,127.0.0.1," + at[2], local = "://127.0.0.1:";
  FixedPortCatalog ports;
  for (const std::string& name :
       {"tcp" + local + at[0], "rfc2217" + local + at[1], ssl + "good.pem" + tls,
        "rfc2217" + local + at[3], ssl + "wrong.pem" + tls, "tcp" + local + FreePort(),
        "tcp" + local + std::to_string(silent), std::string("tcp://nowhere.invalid:7000")})
    ports.Ports().push_back({name, name});
  QTest::qWait(500);  // ser2net listening
  QtClock clock;
  RecordingLog log;
  QtMessages boxes;
  QtFileChooser files({});
  App app;
  IcomWindow w(app, WindowServices{clock, ports, lines, log, boxes, files, d});
  MainWindow view(w);
  boxes.SetParent(&view);
  view.ShowAndStart();
  const auto showsTheRadio = [&](int row) {
    radios[row]->WithBus([](sim::SimBus& bus) { bus.Radio(8)->frequencyHz = 145'500'000; });
    w.FreqDisplay.SetText("-");
    w.SerialPopup.SetListIndex(row);
    return Eventually([&] { return w.FreqDisplay.Text() == "145500"; });
  };
  // Raw TCP, RFC 2217 and TLS: the radio's frequency shows, and a frequency set reaches it whole.
  for (int row = 0; row < 3; ++row) {
    EXPECT_TRUE(showsTheRadio(row)) << row;
    w.EditFreq.SetText("");
    QTest::keyClicks(view.Client()->findChild<QWidget*>("EditFreq"), "14250\r");
    EXPECT_TRUE(Eventually([&] { return radios[row]->WithBus(SawFrequencySet); })) << row;
  }
  // Every Baud Rate row sets the far port's speed; every byte value crosses both ways.
  w.SerialPopup.SetListIndex(3);
  for (int row = 0; row < kBaudRows; ++row) {
    w.BaudPopup.SetListIndex(row);
    EXPECT_TRUE(Eventually([&] { return SpeedOf(barePath) == BaudForCode(row); })) << row;
  }
  std::string all, got(4096, 0), hex;
  for (int b = 0; b < 256; ++b)
    all += static_cast<char>(b), hex += QString::asprintf("%02X_", b).toStdString();
  w.Serial1->Write(all);
  QTest::qWait(1000);
  got.resize(static_cast<std::size_t>(std::max<ssize_t>(0, ::read(bare, got.data(), got.size()))));
  EXPECT_NE(got.find(all), std::string::npos);  // among the polls sent meanwhile
  w.DebugCheckBox.SetValue(true);
  ASSERT_EQ(::write(bare, all.data(), all.size()), 256);
  EXPECT_TRUE(Eventually([&] {
    std::ifstream debug(d + "DEBUG.TXT");
    return std::string(std::istreambuf_iterator<char>(debug), {}) == hex;
  }));
  // A wrong CA, a refused port, a host that never answers and a name that is not found end as a
  // port that will not open, within the bound, while the window goes on polling.
  const std::pair<int, std::string> failing[] = {{4, "Certificate is not valid"},
                                                 {5, "Connection refused"},
                                                 {6, "no connection within 4 s"},
                                                 {7, "Unable to find a valid name"}};
  for (const auto& [row, reason] : failing) {
    const std::size_t before = boxes.Told().size();
    const int polls = log.Count("send packet");
    QElapsedTimer took;
    took.start();
    w.SerialPopup.SetListIndex(row);
    EXPECT_TRUE(Eventually([&] { return boxes.Told().size() > before; }));
    EXPECT_LT(took.elapsed(), 5000) << row;
    EXPECT_GE(log.Count("send packet") - polls, took.elapsed() / 2000) << row;
    EXPECT_EQ(boxes.Told().back(), "Failure to open serial  port!!");
    EXPECT_NE(log.lines.back().find(reason), std::string::npos) << log.lines.back();
  }
  // ser2net stopped mid-session: the status line says the port is gone.
  EXPECT_TRUE(showsTheRadio(0));
  ser2net.kill();
  EXPECT_TRUE(Eventually([&] { return view.statusBar()->currentMessage().contains("is gone"); }));
  for (int fd : {listener, bare, bareKeep}) ::close(fd);
}

}  // namespace
}  // namespace tarn::test
