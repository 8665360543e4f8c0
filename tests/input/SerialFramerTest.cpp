#include "input/SerialFramer.h"

#include <gtest/gtest.h>

#include <random>

#include "FramingModel.h"

namespace {

std::vector<std::string> frame(const std::vector<std::string>& bursts, const std::string& suffix)
{
    SerialFramer framer(suffix);
    std::vector<std::string> codes;
    for (const auto& burst : bursts) {
        for (char c : burst)
            if (auto code = framer.feed(c))
                codes.push_back(*code);
        if (auto code = framer.quiet())
            codes.push_back(*code);
    }
    return codes;
}

}  // namespace

TEST(SerialFramer, SuffixEndsCode)
{
    EXPECT_EQ(frame({"123\r"}, "\r"), std::vector<std::string>{"123"});
    EXPECT_EQ(frame({"\r"}, "\r"), std::vector<std::string>{});
    EXPECT_EQ(frame({"12", "3\r"}, "\r"), std::vector<std::string>{"3"});
    EXPECT_EQ(frame({"AB\n\r"}, "\n\r"), std::vector<std::string>{"AB"});
    EXPECT_EQ(frame({"ABX\r"}, "\n\r"), std::vector<std::string>{"AB"});
    EXPECT_EQ(frame({"A\r", "ABCxy\r"}, "xy\r"), std::vector<std::string>{"ABC"});
}

TEST(SerialFramer, PauseEndsCodeWithoutSuffix)
{
    EXPECT_EQ(frame({"123", "45"}, ""), (std::vector<std::string>{"123", "45"}));
    EXPECT_EQ(frame({""}, ""), std::vector<std::string>{});
    EXPECT_EQ(frame({std::string("a\0b", 3)}, ""), std::vector<std::string>{std::string("a\0b", 3)});
}

TEST(SerialFramer, OverlongCodeIsDroppedAndFramingRecovers)
{
    SerialFramer framer("\r");
    for (size_t i = 0; i < kMaxCodeBytes + 10; ++i)
        EXPECT_FALSE(framer.feed('x'));
    EXPECT_FALSE(framer.feed('\r'));
    for (char c : std::string("ok"))
        framer.feed(c);
    EXPECT_EQ(framer.feed('\r'), std::optional<std::string>("ok"));
}

TEST(SerialFramer, AgreesWithModelOnRandomStreams)
{
    std::mt19937 rng(2026);
    const char alphabet[] = {'1', 'A', '\r', '\n', '\x1D', '\0', '\xD0', 'x'};
    for (const std::string& suffix : {std::string("\r"), std::string("\n\r"), std::string(""),
                                     std::string("xy\r")}) {
        for (int round = 0; round < 500; ++round) {
            std::vector<std::string> bursts(1 + rng() % 5);
            for (auto& b : bursts)
                for (size_t n = rng() % 12; n > 0; --n)
                    b += alphabet[rng() % sizeof alphabet];
            ASSERT_EQ(frame(bursts, suffix), expectedCodes(bursts, suffix));
        }
    }
}
