// One QApplication for every Qt test, made before the first test and gone after the last. The
// widgets run on the offscreen platform unless the environment chose another.
#include <gtest/gtest.h>

#include <QApplication>
#include <memory>

namespace {

class QtApplicationEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    app_ = std::make_unique<QApplication>(argc_, argv_);
  }
  void TearDown() override { app_.reset(); }

 private:
  int argc_ = 1;
  char name_[18] = "tarnline_qt_tests";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QApplication> app_;
};

[[maybe_unused]] ::testing::Environment* const kQtEnvironment =
    ::testing::AddGlobalTestEnvironment(new QtApplicationEnvironment);

}  // namespace
