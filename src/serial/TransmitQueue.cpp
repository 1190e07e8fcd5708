// SPDX-License-Identifier: GPL-3.0-or-later
// The transmit ring: frames wait here until Timer2 hands them to the port, one per tick. Timer2
// sleeps while the ring is empty, and each frame stored wakes it.
//
// 10000 positions, so at most 9999 bytes wait (a full ring could not be told from an empty one).
// A frame that does not fit whole is refused whole: nothing waiting is overwritten, no frame goes
// out cut, and the caller never waits. Refusals are told through the log, the first at once and
// the rest as a count once the ring takes frames again, so that a flood cannot flood the log.
#include "link/Civ.h"
#include "link/IcomWindow.h"

namespace tarn {

i64 IcomWindow::RingWaiting() const {
  return (serialBufHead - serialBufTail + kRingPositions) % kRingPositions;
}

void IcomWindow::SendSerialPacket(std::string_view packet) {
  System.DebugLog("send packet");
  const i64 room = kRingPositions - 1 - RingWaiting();
  if (Len(packet) > room) {
    ++refusedFrames_;
    if (refusedUntold_++ == 0) System.DebugLog("transmit queue full: frame refused");
    return;
  }
  if (refusedUntold_ > 1) {
    System.DebugLog("transmit queue full: " + Str(refusedUntold_ - 1) + " more frames refused");
  }
  refusedUntold_ = 0;
  for (char c : packet) {
    serialBuf[static_cast<std::size_t>(serialBufHead)] = static_cast<unsigned char>(c);
    if (++serialBufHead >= kRingPositions) serialBufHead = 0;
  }
  Timer2.Wake();
}

// One transfer: bytes up to and including the first end byte, or all that waits, or 50 bytes,
// whichever comes first; one Write for all of them.
void IcomWindow::DoSerialOut() {
  constexpr i64 kMaxTransfer = 50;
  if (serialBufHead == serialBufTail) return;
  char out[kMaxTransfer];
  i64 count = 0;
  bool stop = false;
  while (!stop) {
    const i64 byte = serialBuf[static_cast<std::size_t>(serialBufTail)];
    out[count] = static_cast<char>(byte);
    if (byte == civ::kEnd) stop = true;
    ++count;
    if (++serialBufTail >= kRingPositions) serialBufTail = 0;
    if (serialBufTail == serialBufHead) stop = true;
    if (count >= kMaxTransfer) stop = true;
  }
  if (Serial1) Serial1->Write(std::string_view(out, static_cast<std::size_t>(count)));
}

void IcomWindow::Timer2_Action(Timer&) {
  DoSerialOut();
  // What the line did not take goes out at the pump's reads.
  if (Serial1 && Serial1->HoldsOutput()) Timer1.Wake();
}

}  // namespace tarn
