#include "scanlib/base/text.h"

#include <gtest/gtest.h>

#include <string>

using namespace orva;

TEST(Text, copyEndsBetweenCharactersAndWithATerminator)
{
    const std::string text = "a扫描"; // 1 + 3 + 3 bytes
    const std::pair<std::size_t, std::string> cases[] = { { 1, "" }, { 2, "a" }, { 4, "a" },
        { 5, "a扫" }, { 7, "a扫" }, { 8, text }, { 64, text } };
    for (const auto& [size, expected] : cases) {
        std::string buffer(size + 1, '#');
        copyText(text, buffer.data(), size);
        EXPECT_EQ(std::string(buffer.c_str()), expected) << size;
        EXPECT_EQ(buffer.back(), '#') << "wrote past " << size;
    }
    EXPECT_EQ(utf8Prefix("\x80\x80\x80", 2), "") << "no character begins here";
    const char full[] = { 'a', 'b' };
    EXPECT_FALSE(isTerminated(full, sizeof(full)));
}
