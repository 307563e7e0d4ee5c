// The frames of ASH, the protocol in which EZSP commands travel over a serial line to a Zigbee
// network co-processor (Silicon Labs UG101), as far as the presence check sends any. A frame is
//
//     control byte | content, randomised | checksum, high byte first | flag
//
// and control bytes are 0x00 to 0x7F data (frame number << 4 | acknowledgement number), 0x80 to
// 0x8F an acknowledgement, 0xC0 a reset. No byte is escaped: the check's own content needs none,
// and a checksum byte that would is sent as it is.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <vector>

namespace ash {

constexpr uint8_t kFlag = 0x7E;  // the last byte of every frame

// It is the CRC-CCITT of UG101: polynomial 0x1021, initial value 0xFFFF, not reflected. It covers
// the control byte and the content after its randomisation.
uint16_t checksum(const uint8_t* bytes, size_t size);

// XORs the content of a data frame with the sequence 0x42, 0x21, 0xA8, … of a shift register whose
// feedback is 0xB8 (UG101). Done twice, it gives back what was there.
void randomise(uint8_t* bytes, size_t size);

// Cancels what the co-processor may have got in part, and resets it.
std::vector<uint8_t> resetFrame();

// An acknowledgement; of number, by which the protocol means the frame that is expected next, the
// low three bits count.
std::vector<uint8_t> acknowledgement(uint8_t number);

// Carries one EZSP command. The low three bits of the number are the frame's own number and, as the
// check gets one answer to each question, the one that it acknowledges.
std::vector<uint8_t> dataFrame(uint16_t number, std::vector<uint8_t> content);

}  // namespace ash
