#include "WrapperTestSupport.h"

namespace vexal::testing {
namespace {

using Tokens = std::vector<std::string>;

class StringUtilsTest : public WrapperTest {};

TEST_F(StringUtilsTest, ContainsTreatsTheEmptyNeedleAsAlwaysPresent) {
    EXPECT_TRUE(stringUtils::contains("abc", ""));
    EXPECT_TRUE(stringUtils::contains("", ""));
    EXPECT_FALSE(stringUtils::contains("", "a"));
    EXPECT_TRUE(stringUtils::contains("xQUARNE_y", "QUARNE_"));
    EXPECT_FALSE(stringUtils::contains("QUARNE", "QUARNE_"));
}

TEST_F(StringUtilsTest, EqualsComparesLengthAndBytes) {
    EXPECT_TRUE(stringUtils::equals("abc", "abc"));
    EXPECT_FALSE(stringUtils::equals("abc", "abc "));
    EXPECT_FALSE(stringUtils::equals("abc", "ABC"));
    EXPECT_TRUE(stringUtils::equals(std::string("a\0b", 3), std::string("a\0b", 3)));
    EXPECT_FALSE(stringUtils::equals(std::string("a\0b", 3), std::string("a\0c", 3)));
}

TEST_F(StringUtilsTest, ParseIntReadsALeadingNumberAndOtherwiseGivesZero) {
    EXPECT_EQ(stringUtils::parseInt("12ab"), 12);
    EXPECT_EQ(stringUtils::parseInt("ab"), 0);
    EXPECT_EQ(stringUtils::parseInt(""), 0);
    EXPECT_EQ(stringUtils::parseInt(" -7"), -7);
    EXPECT_EQ(stringUtils::parseInt("+5"), 5);
    EXPECT_EQ(stringUtils::parseInt("2147483647"), 2147483647);
    EXPECT_EQ(stringUtils::parseInt("-2147483648"), INT32_MIN);
    EXPECT_EQ(stringUtils::parseInt("2147483648"), 0);
    EXPECT_EQ(stringUtils::parseInt("-99999999999999999999"), 0);
    EXPECT_EQ(stringUtils::valueOf(-42), "-42");
    EXPECT_EQ(stringUtils::valueOf(INT32_MIN), "-2147483648");
}

TEST_F(StringUtilsTest, TrimRemovesOnlyCharactersOfTheSet) {
    EXPECT_EQ(std::string(stringUtils::WHITESPACE), " \n\r\t");
    EXPECT_EQ(stringUtils::trimLeft(" \t a b \n", stringUtils::WHITESPACE), "a b \n");
    EXPECT_EQ(stringUtils::trimRight(" \t a b \n", stringUtils::WHITESPACE), " \t a b");
    EXPECT_EQ(stringUtils::trim(" \t a b \r\n", stringUtils::WHITESPACE), "a b");
    EXPECT_EQ(stringUtils::trim(" \t\t ", stringUtils::WHITESPACE), "");
    EXPECT_EQ(stringUtils::trim("x", stringUtils::WHITESPACE), "x");
    EXPECT_EQ(stringUtils::trim("", stringUtils::WHITESPACE), "");
    EXPECT_EQ(stringUtils::trim("  a  ", ""), "  a  ");
    EXPECT_EQ(stringUtils::trim("xyaxy", "yx"), "a");
}

TEST_F(StringUtilsTest, SplitTreatsTheSeparatorAsASetAndDropsEmptyTokens) {
    EXPECT_EQ(stringUtils::split("a,,b,", ","), (Tokens{"a", "b"}));
    EXPECT_EQ(stringUtils::split("-1", "-"), (Tokens{"1"}));
    EXPECT_EQ(stringUtils::split("1-2", "-"), (Tokens{"1", "2"}));
    EXPECT_EQ(stringUtils::split(",,,", ","), Tokens{});
    EXPECT_EQ(stringUtils::split("", ","), Tokens{});
    EXPECT_EQ(stringUtils::split("a,b", ""), (Tokens{"a,b"}));
    EXPECT_EQ(stringUtils::split("a:b,c;d", ",;"), (Tokens{"a:b", "c", "d"}));
    EXPECT_EQ(stringUtils::split(";a", ";,"), (Tokens{"a"}));
}

}  // namespace
}  // namespace vexal::testing
