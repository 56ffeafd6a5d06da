// Numbers told from names, and the symbol table at its limits.
#include "kernel/symbols.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>

#include "base/escape.h"
#include "support/recording_host.h"

namespace photrak {
namespace {

TEST(IsNumber, AcceptsOneDecimalNumber) {
    const std::pair<const char*, double> numbers[] = {
        {"+5", 5}, {"-5.25", -5.25}, {"  7", 7},    {"3.5 ;, ", 3.5},    {".5", 0.5},
        {"2.", 2}, {"1e-3", 1e-3},   {"1E+3", 1e3}, {"1e400", HUGE_VAL}, {"1e-400", 0}};
    for (const auto& [text, expected] : numbers) {
        double value = -1.0;
        EXPECT_TRUE(IsNumber(text, &value)) << text;
        EXPECT_EQ(value, expected) << text;
    }
    for (const char* text : {"", "   ", ",", "-", ".", "e5", "1e", "1 2", "1,2", "inf", "-inf",
                             "nan", "0x10", "1e5x", "+-5", "- 5", "\t5", "5\t"}) {
        double value = -1.0;
        EXPECT_FALSE(IsNumber(text, &value)) << text;
        EXPECT_EQ(value, -1.0) << text;
    }
}

class Symbols : public ::testing::Test {
  protected:
    Symbols() { EXPECT_TRUE(AllocateSymbols(table, symbolTableCapacity)); }
    SymbolTable table;
};

TEST_F(Symbols, FindsEachOfAFullTable) {
    // Inserted in a scattered order: 241 has no factor in common with 512.
    for (int i = 0; i < symbolTableCapacity; ++i) {
        const int key = (i * 241) % symbolTableCapacity;
        EXPECT_TRUE(SymbolSetValue(table, "k" + std::to_string(key), key));
    }
    EXPECT_TRUE(SymbolSetValue(table, "k7", 7));  // a replacement needs no room
    for (int key = 0; key < symbolTableCapacity; ++key) {
        double value = -1.0;
        SymbolGetValue(table, "k" + std::to_string(key), value);
        EXPECT_EQ(value, key);
    }
}

TEST_F(Symbols, RefusesWhatDoesNotFit) {
    EXPECT_TRUE(SymbolInsert(table, std::string(31, 'n'), 1, std::string(79, '1')));
    EXPECT_FALSE(SymbolInsert(table, std::string(32, 'n'), 1, ""));
    EXPECT_FALSE(SymbolInsert(table, "text", 1, std::string(80, '1')));
    EXPECT_FALSE(SymbolSetValue(table, std::string_view("a\0b", 3), 1));
    EXPECT_EQ(table.count, 1);
    EXPECT_EQ(FindSymbol(table, std::string(31, 'n'))->text, std::string(79, '1'));
}

class BuiltTable : public ::testing::Test {
  protected:
    void Declare(const std::string& name, const std::string& value) {
        workspace.variables.push_back({});
        workspace.variables.back().name = name;
        workspace.variables.back().value = value;
    }
    Workspace workspace;
    std::string text;
};

// What a nested run is given is put in front of the variables of its own file and must hide them.
TEST_F(BuiltTable, KeepsTheFirstOfANameAsAValueOrAText) {
    Declare("loss", " 0.2, ");
    Declare("span", "80e3*2;");
    workspace.variables.back().type = StringType;  // all types go in alike
    Declare("empty", "");
    Declare("loss", "2*att");
    for (int repeat = 0; repeat < 2; ++repeat) {
        EXPECT_EQ(BuildSymbolTable(workspace, text), Status::Success) << text;
        EXPECT_EQ(workspace.symbols.count, 3);
        EXPECT_EQ(FindSymbol(workspace.symbols, "loss")->value, 0.2);
        EXPECT_STREQ(FindSymbol(workspace.symbols, "loss")->text, "");
        EXPECT_STREQ(FindSymbol(workspace.symbols, "span")->text, "80e3*2");
        EXPECT_EQ(FindSymbol(workspace.symbols, "empty")->value, 0.0);
    }
}

TEST_F(BuiltTable, TooManyVariablesEndTheRun) {
    RecordingHost host;
    for (int i = 0; i < 600; ++i) Declare("v" + std::to_string(i), "1");
    {
        const EscapeLevel level(/*armed=*/true);
        EXPECT_THROW(static_cast<void>(BuildSymbolTable(workspace, text)), Escape);
    }
    EXPECT_EQ(host.Errors(), "Symbol table full, cannot insert v512");
    EXPECT_EQ(BuildSymbolTable(workspace, text), Status::Error);  // nobody to escape to
}

}  // namespace
}  // namespace photrak
