#include "platform/crash_line.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

std::string crashLine(std::uint64_t address, std::size_t room = 256) {
    std::array<char, 256> buffer{};
    const CrashFacts facts{.program = "vantrel",
                           .version = "1.2.3",
                           .kind = "exception",
                           .code = 0xC0000005,
                           .address = address,
                           .programStart = 0x140000000,
                           .programSize = 0x1000};
    return {buffer.data(), writeCrashLine(facts, std::span(buffer).first(room))};
}

TEST(CrashLine, GivesTheOffsetInTheProgram) {
    const std::string begin = "vantrel 1.2.3 crashed: exception 0xC0000005 at ";
    EXPECT_EQ(crashLine(0x140000000), begin + "vantrel+0x0\n");
    EXPECT_EQ(crashLine(0x140000FFF), begin + "vantrel+0xFFF\n");
    EXPECT_EQ(crashLine(0x140001000), begin + "0x140001000, outside the program\n");
    EXPECT_EQ(crashLine(0x13FFFFFFF), begin + "0x13FFFFFFF, outside the program\n");
    EXPECT_EQ(crashLine(UINT64_MAX), begin + "0xFFFFFFFFFFFFFFFF, outside the program\n");
}

TEST(CrashLine, IsCutToItsRoom) {
    EXPECT_EQ(crashLine(0x140000000, 20), "vantrel 1.2.3 crashe");
}

} // namespace
