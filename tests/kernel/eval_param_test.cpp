// Evaluation and limits of parameters, with each message in full.
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "base/text.h"
#include "kernel/graph.h"
#include "kernel/symbols.h"
#include "support/parameter_list.h"

namespace photrak {
namespace {

class EvalParameter : public ::testing::Test {
  protected:
    EvalParameter() {
        const struct {
            const char *name, *value;
            std::int32_t type;
        } variables[] = {
            {"len", "2", DoubleType},     {"twice", "2*len", DoubleType},
            {"z", "1.5 -2", ComplexType}, {"zz", "z", DoubleType},
            {"letter", "q", CharType},    {"alias", "letter", DoubleType},
            {"Cnumber", "4", DoubleType}, {"Aname", "1 1", ComplexType},
        };
        for (const auto& [name, value, type] : variables) AddVariable(workspace, name, type, value);
        std::string unheard;
        EXPECT_EQ(BuildSymbolTable(workspace, unheard), Status::Success);
        FindVariable("z", workspace)->actual = &refreshedPair;
        FindVariable("letter", workspace)->actual = &refreshedLetter;
    }
    Status Evaluate(Parameter& parameter) {
        text.clear();
        return EvalParam(&parameter, &workspace, text);
    }

    Workspace workspace;
    ParameterList list;
    std::string text;
    Complex refreshedPair;
    char refreshedLetter = ' ';
};

TEST_F(EvalParameter, ReadsNumbersAndExpressions) {
    struct {
        const char* text;
        double value;
        std::int32_t whole;
    } const cases[] = {
        {"3.5, ", 3.5, 3},
        {"-twice+0.25", -3.75, -3},
        {"1e12", 1e12, std::numeric_limits<std::int32_t>::max()},
        {"-len*1e12", -2e12, std::numeric_limits<std::int32_t>::min()},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.text);
        Parameter& real = list.Add("real", DoubleType, row.text);
        Parameter& whole = list.Add("whole", IntType, row.text);
        EXPECT_EQ(Evaluate(real), Status::Success);
        EXPECT_DOUBLE_EQ(BlockValue<double>(real.valactual), row.value);
        EXPECT_EQ(*real.stddev, 0.0);
        EXPECT_EQ(Evaluate(whole), Status::Success);
        EXPECT_EQ(BlockValue<std::int32_t>(whole.valactual), row.whole);
        EXPECT_EQ(whole.stddev, nullptr);
        EXPECT_STREQ(real.value, row.text);
    }
}

TEST_F(EvalParameter, WarnsOfWhatCannotBeEvaluatedAndGoesOnWithZero) {
    Parameter& gain = list.Add("gain %s", DoubleType, "len");
    EXPECT_EQ(Evaluate(gain), Status::Success);
    SetText(&gain.value, "1/0");
    SetText(&gain.STDDEV, "");
    EXPECT_EQ(Evaluate(gain), Status::Warning);
    EXPECT_EQ(text,
              "WARNING in EvalParam: 'gain %s' value cannot be evaluated\n"
              "WARNING in EvalParam: 'gain %s' stddev cannot be evaluated\n");
    EXPECT_EQ(BlockValue<double>(gain.valactual), 0.0);
    EXPECT_EQ(*gain.stddev, 0.0);
}

TEST_F(EvalParameter, RefusesEmptyValues) {
    Parameter& parameter = list.Add("x", DoubleType, "");
    for (std::int32_t type = DoubleType; type <= ComplexArrayType; ++type) {
        SCOPED_TRACE(type);
        parameter.type = type;
        EXPECT_EQ(Evaluate(parameter), Status::Error);
        EXPECT_EQ(text, "ERROR in EvalParam: 'x' value == \"\"\n");
    }
}

TEST_F(EvalParameter, ReadsPairsAndCharactersThroughVariables) {
    Parameter& pair = list.Add("pair", ComplexType, " 1e3-2.5e1 rest");
    EXPECT_EQ(Evaluate(pair), Status::Success);
    EXPECT_TRUE(BlockValue<Complex>(pair.valactual) == MakeComplex(1e3, -25));
    SetText(&pair.value, "zz");
    EXPECT_EQ(Evaluate(pair), Status::Success) << text;
    EXPECT_TRUE(BlockValue<Complex>(pair.valactual) == MakeComplex(1.5, -2));
    EXPECT_TRUE(refreshedPair == MakeComplex(1.5, -2));

    Parameter& mark = list.Add("mark", CharType, "alias");
    EXPECT_EQ(Evaluate(mark), Status::Success) << text;
    EXPECT_EQ(BlockValue<char>(mark.valactual), 'q');
    EXPECT_EQ(refreshedLetter, 'q');

    const struct {
        Parameter& parameter;
        const char *value, *text;
    } refused[] = {
        // By design: of another type than the one that is wanted.
        {pair, "Cnumber", "ERROR: variable 'Cnumber' is not type IntType\n"},
        {mark, "ab", "ERROR: variable 'ab' in parameter 'mark' not found\n"},
    };
    for (const auto& row : refused) {
        SetText(&row.parameter.value, row.value);
        EXPECT_EQ(Evaluate(row.parameter), Status::Error);
        EXPECT_EQ(text, row.text);
    }
}

TEST_F(EvalParameter, ByDesignComplexNamesStartAtB) {
    Parameter& parameter = list.Add("x", ComplexType, "Aname");
    EXPECT_EQ(Evaluate(parameter), Status::Success);
    EXPECT_TRUE(BlockValue<Complex>(parameter.valactual) == MakeComplex(0, 0));
}

/// A ring of the given draws on the parameter.
void GiveDraws(Parameter& parameter, std::initializer_list<Complex> deviates) {
    ParameterDraw** tail = &parameter.draws;
    for (const Complex& deviate : deviates) {
        *tail = NewBlock(ParameterDraw{deviate.re, deviate.im, nullptr});
        tail = &(*tail)->next;
    }
    parameter.drawCursor = parameter.draws;
}

TEST_F(EvalParameter, ComponentAddsDrawsRoundTheRing) {
    Component component;
    Parameter& real = list.Add("real", DoubleType, "10");
    SetText(&real.STDDEV, "len");
    GiveDraws(real, {MakeComplex(1), MakeComplex(-0.5)});
    Parameter& pair = list.Add("pair", ComplexType, "1 2");
    pair.stddev = NewBlock(0.5);
    pair.istddev = NewBlock(4.0);
    GiveDraws(pair, {MakeComplex(2, 3)});
    component.parameters = list.Release();
    for (const double expected : {12.0, 9.0, 12.0}) {
        EXPECT_EQ(EvalComponentParams(component, &workspace, text), Status::Success);
        EXPECT_EQ(BlockValue<double>(real.valactual), expected);
        EXPECT_TRUE(BlockValue<Complex>(pair.valactual) == MakeComplex(2, 14));
    }
}

template <class T>
void ExpectClamped(std::int32_t type, T least, T greatest, const char* below, const char* above,
                   std::initializer_list<std::pair<T, T>> cases) {
    ParameterList list;
    Parameter& parameter = *(list.head = LimitedParameter("p", type, "x", least, greatest));
    parameter.valactual = NewBlock(T{});
    for (const auto& [value, expected] : cases) {
        SCOPED_TRACE(testing::Message() << "type " << type << " value " << value);
        std::memcpy(parameter.valactual, &value, sizeof(T));
        std::string text, message;
        if (value != expected) {
            message = Concat("WARNING: parameter 'p' ",
                             expected == least ? "less than minimum" : "greater than maximum",
                             " value; change to ", expected == least ? below : above, "\n");
        }
        EXPECT_EQ(ClampParam(parameter, text), message.empty() ? Status::Success : Status::Warning);
        EXPECT_EQ(BlockValue<T>(parameter.valactual), expected);
        EXPECT_EQ(text, message);
    }
}

TEST(ClampParameter, MovesValuesToTheirLimits) {
    ExpectClamped<double>(DoubleType, -2.5e-7, 5.0, "-2.500000e-07", "5.000000e+00",
                          {{5.0, 5.0}, {-1.0, -2.5e-7}, {std::nan(""), -2.5e-7}, {6.0, 5.0}});
    ExpectClamped<std::int32_t>(IntType, -3, 2000000000, "-3", "2000000000",
                                {{-4, -3}, {2000000001, 2000000000}, {7, 7}});
    // Characters compare as signed: 0xE9 lies below 'a'.
    ExpectClamped<char>(CharType, 'a', 'z', "a", "z", {{'~', 'z'}, {'\xE9', 'a'}, {'m', 'm'}});
}

TEST(ClampParameter, AcceptsAbsentLimitsAndRefusesPairs) {
    ParameterList list;
    std::string text;
    Parameter& free = list.Add("free", DoubleType, "1");
    free.valactual = NewBlock(-1e300);
    EXPECT_EQ(ClampParam(free, text), Status::Success);
    EXPECT_EQ(text, "");
    EXPECT_EQ(ClampParam(list.Add("z", ComplexType, "1 2"), text), Status::Error);
    EXPECT_EQ(text, "ERROR: Complex parameter types not yet supported\n");
}

TEST(ClampParameter, ByDesignMissingValueIsAWarningTextWithErrorStatus) {
    ParameterList list;
    std::string text;
    EXPECT_EQ(ClampParam(list.Add("p", DoubleType, "1"), text), Status::Error);
    EXPECT_EQ(text, "WARNING: parameter 'p' has no valactual field");
}

}  // namespace
}  // namespace photrak
