// The frames of the serial line: taken apart, put together, and pasted as text.
#include <gmock/gmock.h>

#include "host/board/coprocessor/ash_frame.h"
#include "host/board/coprocessor/ezsp.h"
#include "tools/tarqctl/view/frames.h"
#include "tools/tarqctl/view/hex_text.h"

using namespace tarq::board::ash;
using tarq::tools::bytesFromText;
using tarq::tools::textOf;
using namespace testing;

namespace {

using Lines = std::vector<std::string>;

Lines linesOf(const std::string& hex, size_t chunk) {
    const Bytes bytes = bytesFromText(hex);
    Reader reader;
    std::vector<Frame> frames;
    for (size_t i = 0; i < bytes.size(); i += chunk) {
        const size_t size = std::min(chunk, bytes.size() - i);
        for (Frame& frame : reader.read(bytes.data() + i, size)) frames.push_back(frame);
    }
    for (Frame& frame : reader.finish()) frames.push_back(frame);
    Lines lines;
    Bytes all;
    for (const Frame& frame : frames) {
        lines.push_back(textOf(frame));
        all.insert(all.end(), frame.bytes.begin(), frame.bytes.end());
    }
    EXPECT_EQ(asHex(all), asHex(bytes)) << "each byte in one frame";
    return lines;
}

// Whole, byte by byte and in between it is the same.
Lines linesOf(const std::string& hex) {
    const Lines whole = linesOf(hex, 10000);
    for (const size_t chunk : {1, 3}) EXPECT_EQ(linesOf(hex, chunk), whole) << hex;
    return whole;
}

TEST(Ash, frame_of_each_type_is_read_and_written_back) {
    const std::pair<const char*, const char*> kFrames[] = {
            {"1a c0 38 bc 7e", "RST"},
            {"1a c1 02 0b 0a 52 7e", "RSTACK version 2 code 0b, software"},
            {"1a c1 02 02 9b 7b 7e", "RSTACK version 2 code 02, power-on"},
            {"c2 02 51 a8 bd 7e",
             "ERROR version 2 code 51, too many time-outs of acknowledgements"},
            {"81 60 59 7e", "ACK 1"},
            {"89 e1 51 7e", "ACK 1 busy"},
            {"a1 44 3b 7e", "NAK 1"},
            {"00 42 21 a8 53 dd 4f 7e", "DATA frame 0 ack 0  EZSP 00 version, wants 7"},
            {"7d 31 43 21 57 54 39 51 2b 7e", "DATA frame 1 ack 1  EZSP 01 query"},
            {"01 42 a1 a8 53 28 15 d5 e1 fd 7e",
             "DATA frame 0 ack 1  EZSP 00 version answered: speaks 7, stack 2 of version 6.7.0"},
            {"0a 43 a1 57 54 39 15 b0 49 97 20 56 37 7e",
             "DATA frame 0 ack 2 again  EZSP 01 query answered: manufacturer 1002, version 6.10.3"},
            {"02 43 a1 57 54 39 15 86 84 ae 7e",
             "DATA frame 0 ack 2  EZSP 01 query answered: manufacturer 0034, version 0.0.0"},
            {"02 43 a1 57 47 85 68 7e", "DATA frame 0 ack 2  EZSP 01 id ff answered: 13"},
            {"00 42 21 82 50 04 01 7e", "DATA frame 0 ack 0  EZSP 00 id 2a, 04"}};
    for (const auto& [hex, line] : kFrames) {
        EXPECT_EQ(linesOf(hex), Lines{line});
        EXPECT_EQ(asHex(encode(Reader().read(bytesFromText(hex)).at(0))), hex);
    }
}

TEST(Ash, damage_is_named_and_the_next_frame_is_a_good_one) {
    const std::string tooLong((131 + 1) * 2, '5');
    const std::string endless(299 * 2, '5');
    const std::pair<std::string, const char*> kDamage[] = {
            {"55aa1a", "cancelled: 55 aa"},
            {"551855aa7e", "garbled by the line: 55 18 55 aa 7e"},
            {"7e", "a flag without a frame: 7e"},
            {"c07e", "too short for a frame: c0 7e"},
            {"c038bd7e", "checksum 38bd instead of 38bc: c0 38 bd 7e"},
            {"c308df7e", "unknown control byte c3: c3 08 df 7e"},
            {"004275897e", "DATA with 1 bytes of content: 00 42 75 89 7e"},
            {tooLong + "7e", "longer than a frame: 55"},
    };
    for (const auto& [hex, line] : kDamage) {
        EXPECT_THAT(linesOf(hex + "8160597e"),
                    ElementsAre(AllOf(StartsWith("skipped "), HasSubstr(line)), "ACK 1"));
    }
    EXPECT_THAT(linesOf(endless + "1155557e8160597e"),
                ElementsAre(StartsWith("skipped 300 bytes, longer than a frame"),
                            "skipped 3 bytes, longer than a frame: 55 55 7e", "ACK 1"));
    EXPECT_THAT(linesOf(endless + "551ac038bc7e"), ElementsAre(StartsWith("skipped 300"), "RST"));
    EXPECT_THAT(linesOf("1ac0"), ElementsAre("skipped 2 bytes, no flag at the end: 1a c0"));
}

TEST(Ash, who_does_not_escape_is_understood_where_no_flag_or_escape_byte_is_in_the_frame) {
    EXPECT_EQ(linesOf("114321575439512b7e"), Lines{"DATA frame 1 ack 1  EZSP 01 query"});
    EXPECT_EQ(linesOf("444e21a8530a137e"), Lines{"DATA frame 4 ack 4  EZSP 0c version, wants 7"});
    EXPECT_THAT(
            linesOf("116b21a853b77d7e8160597e"),
            ElementsAre(StartsWith("skipped 8 bytes, a byte in it is not escaped: 11"), "ACK 1"));
    const std::string cut = "may be cut by a flag in its checksum that is not escaped: ";
    EXPECT_THAT(linesOf("776521a853c17e7e8160597e"),
                ElementsAre("skipped 7 bytes, " + cut + "77 65 21 a8 53 c1 7e",
                            "skipped 1 byte, a flag without a frame: 7e", "ACK 1"));
    EXPECT_THAT(linesOf("44f621a8537e017e8160597e"),
                ElementsAre("skipped 6 bytes, " + cut + "44 f6 21 a8 53 7e",
                            "skipped 2 bytes, too short for a frame: 01 7e", "ACK 1"));
}

TEST(Ash, bytes_are_taken_as_people_paste_them) {
    for (const char* text : {"1ac038bc", "1A C0 38 BC", "0x1a,0xC0, 0X38,0xbc", "1a c0\r\n38\tbc\n",
                             "0x1ac0 38bc", ",1ac0,,38bc,", "1a:c0:38:bc", "1A-C0-38-BC",
                             "\\x1a\\xC0\\x38\\xbc", "1ac0 # c0\n#\n38bc#", "# 0x\n1ac038bc"}) {
        EXPECT_EQ(asHex(bytesFromText(text)), "1a c0 38 bc") << text;
    }
    EXPECT_TRUE(bytesFromText(" \n").empty());
    const std::pair<std::string, const char*> kWrong[] = {
            {"1a g0", "1:4: only"},       {"1a\n\nc0 3", "3:4: a byte is two digits"},
            {"1a\n0x", "2:1: no digits"}, {"1a0xc0", "1:3: a byte"},
            {"\n;", "2:1: only"},         {std::string("1a\0", 3), "1:3: a byte of value 0"},
            {"1a\\c0", "1:3: no x"},      {"# 1a\n#\n \\x", "3:2: no digits"},
            {"0000: 1a", "1:5: a colon"}, {"1a 0", "1:4: a byte"}};
    for (const auto& [text, why] : kWrong) {
        EXPECT_THAT([&text = text] { bytesFromText(text); },
                    ThrowsMessage<std::invalid_argument>(StartsWith(why)));
    }
}

}  // namespace
