// SPDX-License-Identifier: GPL-3.0-or-later
// One QApplication for every Qt test, made before the first test and gone after the last. The
// widgets run on the offscreen platform unless the environment chose another.
#include <gtest/gtest.h>

#include <QApplication>
#include <memory>

namespace {

struct QtApplication : ::testing::Environment {
  void SetUp() override {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    app = std::make_unique<QApplication>(argc, argv);
  }
  void TearDown() override { app.reset(); }
  int argc = 1;
  char name[18] = "tarnline_qt_tests";
  char* argv[2] = {name, nullptr};
  std::unique_ptr<QApplication> app;
};

[[maybe_unused]] const auto* const kApp = ::testing::AddGlobalTestEnvironment(new QtApplication);

}  // namespace
