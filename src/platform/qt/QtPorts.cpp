// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/QtPorts.h"

#include <QSerialPortInfo>

namespace tarn {

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
  for (const std::string& path : given) AppendNewPorts(merged, {{path, path}});
  AppendNewPorts(merged, machine);
  return merged;
}

}  // namespace tarn
