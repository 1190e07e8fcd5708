// SPDX-License-Identifier: GPL-3.0-or-later
// Application: what the platform knows of the running program, its name and version.
#pragma once

#include <string>

namespace tarn {

struct AppVersion {
  int MajorVersion = 1;
  int MinorVersion = 3;
  int BugVersion = 0;
  int StageCode = 0;
  int NonReleaseVersion = 0;
  std::string LongVersion = "Tarnline 1.3.0";
  std::string ShortVersion = "1.3.0";
  std::string PackageInfo;
};

class Application {
 public:
  AppVersion version;
};

}  // namespace tarn
