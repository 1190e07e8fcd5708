// App: the application object. It outlives the window and holds the one port choice.
#pragma once

#include <cstdint>
#include <string>

namespace tarn {

struct AppVersion {
  int MajorVersion = 1;
  int MinorVersion = 2;
  int BugVersion = 0;
  int StageCode = 0;
  int NonReleaseVersion = 0;
  std::string LongVersion = "Tarnline 1.2.0";
  std::string ShortVersion = "1.2.0";
  std::string PackageInfo;
};

class App {
 public:
  // The row of SerialPopup in use, which is also the port's index in System.SerialPort. It lives
  // only in memory and starts at 0 on every run.
  std::int64_t ourSerialPort = 0;
  AppVersion version;
};

}  // namespace tarn
