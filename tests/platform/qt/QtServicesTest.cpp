// The message box, the file chooser, the log and the port list of the program.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QMainWindow>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QWidget>
#include <string>
#include <vector>

#include "platform/qt/QtPorts.h"
#include "platform/qt/QtServices.h"

namespace tarn {
namespace {

TEST(QtMessages, AMessageOpensABoxAndReturnsAtOnce) {
  QWidget window;
  window.show();
  QtMessages messages;
  messages.SetParent(&window);
  messages.MsgBox("Failure to open serial  port!!");  // would hang here if it ran a modal loop
  ASSERT_EQ(messages.OpenBoxes().size(), 1u);
  const QMessageBox* box = messages.OpenBoxes().front();
  EXPECT_EQ(box->text(), "Failure to open serial  port!!");
  EXPECT_EQ(box->parentWidget(), &window);
  EXPECT_EQ(messages.Told(), (std::vector<std::string>{"Failure to open serial  port!!"}));
}

TEST(QtMessages, TheSameTextWhileItsBoxIsUpIsCountedButNotStacked) {
  QWidget window;
  window.show();
  QtMessages messages;
  messages.SetParent(&window);
  messages.MsgBox("Failure to open serial  port!!");
  messages.MsgBox("Failure to open serial  port!!");
  messages.MsgBox("The serial port x is gone.");
  EXPECT_EQ(messages.Told().size(), 3u);
  EXPECT_EQ(messages.OpenBoxes().size(), 2u);
}

TEST(QtMessages, AStatusShowsInTheMainWindowsStatusBarOnlyWhileItHasText) {
  QMainWindow window;
  window.show();
  QtMessages messages;
  messages.SetParent(&window);
  messages.ShowStatus(
      "Serial port ttyUSB0 is gone: choose it again under Serial Port once it is back.");
  EXPECT_TRUE(window.statusBar()->isVisible());
  EXPECT_EQ(window.statusBar()->currentMessage(),
            "Serial port ttyUSB0 is gone: choose it again under Serial Port once it is back.");
  EXPECT_TRUE(messages.OpenBoxes().empty());
  messages.ShowStatus("");
  EXPECT_FALSE(window.statusBar()->isVisible());
  EXPECT_EQ(window.statusBar()->currentMessage(), "");
}

TEST(QtMessages, AClosedBoxComesBackForTheNextMessage) {
  QWidget window;
  window.show();
  QtMessages messages;
  messages.SetParent(&window);
  messages.MsgBox("Failure to open serial  port!!");
  messages.OpenBoxes().front()->accept();
  EXPECT_TRUE(messages.OpenBoxes().empty());
  messages.MsgBox("Failure to open serial  port!!");
  EXPECT_EQ(messages.OpenBoxes().size(), 1u);
}

TEST(QtMessages, BoxesWithoutAWindowGoWithTheSink) {
  QPointer<QMessageBox> box;
  {
    QtMessages messages;
    messages.MsgBox("no window yet");
    ASSERT_EQ(messages.OpenBoxes().size(), 1u);
    box = messages.OpenBoxes().front();
  }
  EXPECT_TRUE(box.isNull());
}

TEST(QtFileChooser, OffersTheTextFilterFirstThenAllFiles) {
  QtFileChooser chooser(std::map<std::string, QString>{{"TEXT", "Text files (*.txt *.TXT)"}});
  const auto dialog = chooser.MakeDialog("TEXT");
  EXPECT_EQ(dialog->nameFilters(), (QStringList{"Text files (*.txt *.TXT)", "All files (*)"}));
  EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFile);
  EXPECT_EQ(dialog->acceptMode(), QFileDialog::AcceptOpen);
}

TEST(QtFileChooser, AnUnknownTypeOffersAllFilesOnly) {
  QtFileChooser chooser(std::map<std::string, QString>{{"TEXT", "Text files (*.txt *.TXT)"}});
  EXPECT_EQ(chooser.MakeDialog("BINA")->nameFilters(), (QStringList{"All files (*)"}));
}

std::vector<std::pair<QString, QString>>* gCaptured = nullptr;

void Capture(QtMsgType, const QMessageLogContext& context, const QString& message) {
  gCaptured->emplace_back(QString::fromLatin1(context.category), message);
}

TEST(QtLog, EachLineGoesToTheTarnlineCategory) {
  std::vector<std::pair<QString, QString>> captured;
  gCaptured = &captured;
  const QtMessageHandler previous = qInstallMessageHandler(Capture);
  QtLog log;
  log.DebugLog("send packet");
  log.DebugLog("cannot open serial port /dev/ttyUSB9: No such file");
  qInstallMessageHandler(previous);
  gCaptured = nullptr;
  ASSERT_EQ(captured.size(), 2u);
  EXPECT_EQ(captured[0], std::make_pair(QString("tarnline.debuglog"), QString("send packet")));
  EXPECT_EQ(captured[1].second, "cannot open serial port /dev/ttyUSB9: No such file");
}

TEST(MergePorts, GivenPortsComeFirstInTheirOrderThenTheMachines) {
  const std::vector<SerialPort> machine = {{"ttyS0", "/dev/ttyS0"}, {"ttyUSB0", "/dev/ttyUSB0"}};
  const std::vector<SerialPort> merged = MergePorts({"/dev/pts/7", "/dev/pts/3"}, machine);
  ASSERT_EQ(merged.size(), 4u);
  EXPECT_EQ(merged[0].path, "/dev/pts/7");
  EXPECT_EQ(merged[0].Name, "/dev/pts/7");
  EXPECT_EQ(merged[1].path, "/dev/pts/3");
  EXPECT_EQ(merged[2].Name, "ttyS0");
  EXPECT_EQ(merged[3].path, "/dev/ttyUSB0");
}

TEST(MergePorts, APortIsListedOnceAlsoThroughALink) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  const QString device = dir.filePath("ttyFAKE0");
  const QString link = dir.filePath("by-id-radio");
  ASSERT_TRUE(QFile(device).open(QIODevice::WriteOnly));
  ASSERT_TRUE(QFile::link(device, link));
  const std::vector<SerialPort> machine = {{"ttyFAKE0", device.toStdString()}};
  const std::vector<SerialPort> merged =
      MergePorts({link.toStdString(), link.toStdString()}, machine);
  ASSERT_EQ(merged.size(), 1u);
  EXPECT_EQ(merged[0].path, link.toStdString());  // the user's name for it wins
}

}  // namespace
}  // namespace tarn
