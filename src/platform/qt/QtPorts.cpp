#include "platform/qt/QtPorts.h"

#include <QFileInfo>
#include <QSerialPortInfo>
#include <algorithm>

namespace tarn {

namespace {

std::string SameFileKey(const std::string& path) {
  const QString canonical = QFileInfo(QString::fromStdString(path)).canonicalFilePath();
  return canonical.isEmpty() ? path : canonical.toStdString();
}

}  // namespace

std::vector<SerialPort> MachinePorts() {
  std::vector<SerialPort> ports;
  for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts()) {
    ports.push_back({info.portName().toStdString(), info.systemLocation().toStdString()});
  }
  return ports;
}

std::vector<SerialPort> MergePorts(const std::vector<std::string>& given,
                                   const std::vector<SerialPort>& machine) {
  std::vector<SerialPort> merged;
  std::vector<std::string> keys;
  const auto add = [&](SerialPort port) {
    std::string key = SameFileKey(port.path);
    if (std::find(keys.begin(), keys.end(), key) != keys.end()) return;
    keys.push_back(std::move(key));
    merged.push_back(std::move(port));
  };
  for (const std::string& path : given) add({path, path});
  for (const SerialPort& port : machine) add(port);
  return merged;
}

}  // namespace tarn
