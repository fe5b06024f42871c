// What leaves the library: the entry points of the list, all of them and nothing else.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <sstream>
#include <string>

namespace {

std::set<std::string> exportedSymbols()
{
    std::set<std::string> symbols;
    std::FILE* const nm = popen(ORVA_NM " -D --defined-only " ORVA_LIBRARY_FILE, "r");
    char line[512];
    while (nm != nullptr && std::fgets(line, sizeof(line), nm) != nullptr) {
        std::istringstream fields(line);
        std::string address;
        std::string type;
        std::string name;
        fields >> address >> type >> name;
        symbols.insert(type + " " + name);
    }
    EXPECT_TRUE(nm != nullptr && pclose(nm) == 0);
    return symbols;
}

} // namespace

TEST(ExportedSymbols, areExactlyTheFiftyEntryPoints)
{
    std::set<std::string> expected;
#define ORVA_ENTRY(number, operation, symbol, required, parameters, arguments)                     \
    expected.insert("T " #symbol);
#include "sdk/entry_points.def"
    EXPECT_EQ(expected.size(), 50U);
    EXPECT_EQ(exportedSymbols(), expected);
}
