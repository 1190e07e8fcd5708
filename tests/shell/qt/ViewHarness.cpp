#include "shell/qt/ViewHarness.h"

namespace tarn::test {

ViewHarness::ViewHarness(int portCount) {
  for (int i = 0; i < portCount; ++i) {
    ports.Ports().push_back({"port" + std::to_string(i), "/mem/" + std::to_string(i)});
  }
  w = std::make_unique<IcomWindow>(
      app, WindowServices{clock, ports, driver, log, messages, chooser, std::string()});
  view = std::make_unique<MainWindow>(*w);
  messages.SetParent(view.get());
}

void ViewHarness::Start() {
  view->ShowAndStart();
}

}  // namespace tarn::test
