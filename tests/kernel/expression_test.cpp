// Numbers told from names, the symbol table at its limits, values and error words of the evaluator
// against numbers known beforehand.
#include "kernel/expression.h"

#include <chrono>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "base/escape.h"
#include "base/text.h"
#include "kernel/symbols.h"
#include "platform/file_system.h"
#include "support/paths.h"
#include "support/recording_host.h"

namespace photrak {
namespace {

struct Entry {
    std::string name;
    double value = 0.0;
    std::string text = {};
};

SymbolTable TableOf(const std::vector<Entry>& entries) {
    SymbolTable table;
    EXPECT_TRUE(AllocateSymbols(table, symbolTableCapacity));
    for (const Entry& entry : entries) {
        EXPECT_TRUE(SymbolInsert(table, entry.name, entry.value, entry.text)) << entry.name;
    }
    return table;
}

double ValueOf(const SymbolTable& table, std::string_view text) {
    ExprError error = ExprError::Syntax;
    const double value = ExprEval(table, text, error);
    EXPECT_EQ(error, ExprError::None);
    return value;
}

ExprError ErrorOf(const SymbolTable& table, std::string_view text) {
    ExprError error = ExprError::None;
    EXPECT_EQ(ExprEval(table, text, error), 0.0);
    return error;
}

/// Rows as "1+2*3 = 7".
void ExpectEqual(const std::vector<std::string>& rows, const SymbolTable& table = {}) {
    for (const std::string& row : rows) {
        SCOPED_TRACE(row);
        const std::size_t place = row.find(" = ");
        const double value = ReadDouble(row.substr(place + 3));
        EXPECT_NEAR(ValueOf(table, row.substr(0, place)), value, 1e-12 * std::fabs(value));
    }
}

TEST(Expression, FollowsPrecedenceFromTheLeft) {
    ExpectEqual({"1+2*3 = 7", "8-3-2 = 3", "64/4/2 = 8", " 2/4 *  6  = 3", "0*5+-0 = 0"});
}

TEST(Expression, ByDesignPowerAssociatesFromTheLeftAndMinusTakesAWholeTerm) {
    ExpectEqual({"2^3^2 = 64", "2^(3^2) = 512", "-2^2 = -4", "2*-3 = -6", "2^-1*3 = 0.125",
                 "5-2*-3*2+1 = 18", "--4 = 4"});
}

TEST(Expression, ReadsSignsOfExponentsInNumbersOnly) {
    const SymbolTable table = TableOf({{"x1e", 10}, {"2e", 5}});
    ExpectEqual({"1e-3 = 0.001", "1.5E3 = 1500", "x1e-3 = 7", "e-1 = 1.718281828459045", "3;+1 = 4",
                 "x1e;;-3 = 7"},
                table);
    // By design: a capital E takes no sign; and a tab is no blank.
    for (const char* text : {"1.5E-3", "1e--3", "2e-x", "1\t", "\t1", "1e", "0x10", "infinity"}) {
        EXPECT_EQ(ErrorOf(table, text), ExprError::Syntax) << text;
    }
}

TEST(Expression, CallsFunctionsInDegrees) {
    ExpectEqual({"sqrt(16) = 4", "sqrt(-4) = 0", "log(e^3) = 3", "sin(90)^2*3 = 3", "cos(180) = -1",
                 "tan(45) = 1", "acos(0) = 90", "asin(1) = 90", "atan(1) = 45", "u(0) = 0.5",
                 "um(0) = 0", "up(0) = 1", "clip(1.5) = 1", "clip(-1) = 0", "floor(-1.2) = -2",
                 "round(2.5) = 3", "round(-1e12) = -2147483647", "abs(-7) = 7",
                 // Square waves on both sides of 0; a reserved name, by design 0.
                 "step(0.25) = 1", "step(0.5) = 0", "step(-0.25) = 0", "step(-0.75) = 1",
                 "step2(0.3,0.25) = 0", "step2(-1.9,0.25) = 1", "slabneff() = 0",
                 "slabneff(1,2,3) = 0"});
    EXPECT_DOUBLE_EQ(ValueOf({}, "log(0)"), -300 * std::log(10.0));
    EXPECT_NEAR(ValueOf({}, "cos(90)"), 0.0, 1e-15);
}

TEST(Expression, FitsTheErrorFunctionToItsStatedPrecision) {
    for (const double x : {-3.0, -0.5, 0.0, 0.1, 1.0, 2.5}) {
        SCOPED_TRACE(x);
        const std::string argument = "(" + std::to_string(x) + ")";
        const double fitted = ValueOf({}, "erfc" + argument);
        EXPECT_NEAR(fitted, std::erfc(x), 1.2e-7 * std::erfc(x));
        EXPECT_NEAR(ValueOf({}, "erf" + argument), 1.0 - fitted, 1e-15);
    }
}

TEST(Expression, TakesListsOfArguments) {
    // "1 -2" is one argument.
    ExpectEqual({"min(3,1,2) = 1", "min(1 2) = 1", "max(1 -2) = -1", "min() = 1e30",
                 "max() = -1e30", "min(1,2,3,4,5,6,7,8,9,10) = 1", "max(min(1,2),min(3,4)) = 3",
                 "multiarg(2.6,7,8) = 8"});
}

TEST(Expression, ByDesignSelectionCountsTheSelectorItself) {
    ExpectEqual({"multiarg(1,7,8) = 1", "multiarg(0,7,8) = 3", "multiarg(-0.9,7) = 2"});
    for (const char* text : {"multiarg(4,7,8)", "multiarg(-2,7)", "multiarg()", "multiarg(1e20)",
                             "multiarg(acos(2),1)"}) {
        EXPECT_EQ(ErrorOf({}, text), ExprError::Parenthesis) << text;
    }
}

TEST(Expression, TellsErrorsByTheirWord) {
    const std::pair<ExprError, std::vector<const char*>> rows[] = {
        {ExprError::Syntax,
         {"", "+1", "1+", "1 2", "1)", "()", "unknown", ";", "min(1,,2)", "min(1"}},
        {ExprError::Parenthesis,
         {"(1", "sin 90", "sin(1,2)", "step2 1", "step2(1,2,3)", "min 3",
          "min(1,2,3,4,5,6,7,8,9,10,11)"}},
        {ExprError::DivisionByZero, {"1/(2-2)", "5*(3+1/-0)", "1/0+unknown"}},
    };
    for (const auto& [error, texts] : rows) {
        for (const char* text : texts) EXPECT_EQ(ErrorOf({}, text), error) << text;
    }
}

TEST(Expression, LooksUpPredefinedNamesBeforeSymbolsAndSymbolsBeforeFunctions) {
    const SymbolTable table =
        TableOf({{"c", 1}, {"length", 4}, {"gain", 0, "length*2"}, {"sqrt", 9}});
    ExpectEqual({"c = 299792458", "yes+true = 2", "no+false = 0", "gain^2 = 64", "sqrt = 9",
                 "gain-length = 4"},
                table);
    EXPECT_EQ(ErrorOf(table, "Length"), ExprError::Syntax);
    EXPECT_EQ(ErrorOf(table, "sqrt(4)"), ExprError::Syntax);
}

/// s0 with s1 in the text, s1 with s2, ...; the last is `value`.
SymbolTable Chain(int length, double value, const std::function<std::string(std::string)>& text) {
    std::vector<Entry> entries;
    for (int i = 1; i < length; ++i)
        entries.push_back({Concat("s", i - 1), 0, text(Concat("s", i))});
    entries.push_back({Concat("s", length - 1), value});
    return TableOf(entries);
}

TEST(Expression, FollowsSymbolsTwoHundredDeep) {
    const auto sum = [](const std::string& next) { return next + "+0"; };
    EXPECT_EQ(ValueOf(Chain(200, 42, sum), "s0"), 42.0);
    EXPECT_EQ(ErrorOf(Chain(201, 42, sum), "s0"), ExprError::TooDeep);
    EXPECT_EQ(ErrorOf(TableOf({{"x", 0, "y"}, {"y", 0, "-x"}}), "1+x"), ExprError::TooDeep);
}

TEST(Expression, EndsExponentialWorkInTime) {
    const SymbolTable table =
        Chain(61, 1, [](const std::string& next) { return next + "+" + next; });
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ErrorOf(table, "s0"), ExprError::TooDeep);
    // Some 0.1 s without sanitizers; unbounded it would be 10^18 steps.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(ValueOf(table, "s50"), 1024.0);

    // Many of them share what the table may spend; expressions of usual length go on without it.
    EXPECT_LT(table.stepsLeft, symbolTableSteps - 990'000);
    table.stepsLeft = 5'000;
    EXPECT_EQ(ErrorOf(table, "s0"), ExprError::TooDeep);
    EXPECT_EQ(table.stepsLeft, 0);
}

TEST(Expression, BoundsTheNestingOfTheText) {
    const auto repeat = [](std::string_view piece, int times) {
        std::string text;
        for (int i = 0; i < times; ++i) text += piece;
        return text;
    };
    EXPECT_EQ(ValueOf({}, repeat("(", 1000) + "7" + repeat(")", 1000)), 7.0);
    for (const char* piece : {"(", "-", "abs(", "min(", "2^-"}) {
        SCOPED_TRACE(piece);
        EXPECT_EQ(ErrorOf({}, repeat(piece, 100000) + "1"), ExprError::TooDeep);
    }
    // Deep in each of many symbols.
    const SymbolTable table = Chain(
        200, 1, [&](const std::string& next) { return repeat("(", 35) + next + repeat(")", 35); });
    EXPECT_EQ(ErrorOf(table, "s0"), ExprError::TooDeep);
}

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

/// The guide to expressions holds: each line of its blocks is evaluated.
TEST(ExpressionGuide, EveryLineGivesWhatItSays) {
    std::string guide, reason;
    ASSERT_TRUE(ReadWholeFile(SourceDir() + "/docs/expressions.md", guide, reason)) << reason;
    SymbolTable table;
    ASSERT_TRUE(AllocateSymbols(table, symbolTableCapacity));
    std::istringstream lines(guide);
    bool isInside = false;
    int checked = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("```")) isInside = line == "```expressions";
        if (!isInside || line.starts_with("```")) continue;
        SCOPED_TRACE(line);
        if (const std::size_t named = line.find(" := "); named != std::string::npos) {
            ASSERT_TRUE(SymbolInsert(table, line.substr(0, named), 0.0, line.substr(named + 4)));
            continue;
        }
        const std::size_t equals = line.rfind(" = ");
        ASSERT_NE(equals, std::string::npos);
        const std::string said = line.substr(equals + 3);
        ExprError error = ExprError::None;
        const double value = EvalNumberText(table, line.substr(0, equals), error);
        EXPECT_EQ(error != ExprError::None, said == "error");
        const double wanted = said == "error" ? 0.0 : ReadDouble(said);
        EXPECT_NEAR(value, wanted, 1e-15 * std::fabs(wanted) + 1e-15);
        ++checked;
    }
    EXPECT_GT(checked, 60);
}

}  // namespace
}  // namespace photrak
