// Evaluation and limits of parameters, with each message in full.
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "kernel/symbols.h"
#include "support/parameter_list.h"

namespace photrak {
namespace {

class EvalParameter : public ::testing::Test {
  protected:
    EvalParameter() {
        Declare("len", "2", DoubleType);
        Declare("twice", "2*len", DoubleType);
        Declare("z", "1.5 -2", ComplexType);
        Declare("zz", "z", DoubleType);
        Declare("letter", "q", CharType);
        Declare("alias", "letter", DoubleType);
        Declare("wrong", "x", DoubleType);
        Declare("Cnumber", "4", DoubleType);
        Declare("Loop1", "Loop2", ComplexType);
        Declare("Loop2", "Loop1", ComplexType);
        std::string unheard;
        EXPECT_EQ(BuildSymbolTable(workspace, unheard), Status::Success);
    }
    void Declare(const char* name, const char* value, std::int32_t type) {
        Variable variable;
        variable.name = name;
        variable.value = value;
        variable.type = type;
        workspace.variables.push_back(variable);
    }
    Variable& Declared(std::string_view name) {
        for (Variable& variable : workspace.variables) {
            if (variable.name == name) return variable;
        }
        throw std::out_of_range(std::string(name));
    }
    Status Evaluate(Parameter& parameter) {
        text.clear();
        return EvalParam(&parameter, &workspace, text);
    }

    Workspace workspace;
    ParameterList list;
    std::string text;
};

TEST_F(EvalParameter, ReadsNumbersAndExpressions) {
    struct {
        const char* text;
        double value;
        std::int32_t whole;
    } const cases[] = {
        {"-3.9", -3.9, -3},
        {"3.5, ", 3.5, 3},
        {"twice+0.75", 4.75, 4},
        {"len*2,", 4, 4},
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
    SetText(&gain.value, "abc");
    SetText(&gain.STDDEV, "");
    EXPECT_EQ(Evaluate(gain), Status::Warning);
    EXPECT_EQ(text,
              "WARNING in EvalParam: 'gain %s' value cannot be evaluated\n"
              "WARNING in EvalParam: 'gain %s' stddev cannot be evaluated\n");
    EXPECT_EQ(BlockValue<double>(gain.valactual), 0.0);
    EXPECT_EQ(*gain.stddev, 0.0);

    Parameter& count = list.Add("count", IntType, "1/0");
    EXPECT_EQ(Evaluate(count), Status::Warning);
    EXPECT_EQ(text, "WARNING in EvalParam: 'count' value cannot be evaluated\n");
    EXPECT_EQ(BlockValue<std::int32_t>(count.valactual), 0);
}

TEST_F(EvalParameter, RefusesMissingRecordsAndEmptyValues) {
    EXPECT_EQ(EvalParam(nullptr, &workspace, text), Status::Error);
    EXPECT_EQ(text, "ERROR in EvalParam: thisParam == NULL\n");
    text.clear();
    Parameter& parameter = list.Add("x", DoubleType, "");
    EXPECT_EQ(EvalParam(&parameter, nullptr, text), Status::Error);
    EXPECT_EQ(text, "ERROR in EvalParam for 'x': curWksp == NULL\n");
    for (std::int32_t type = DoubleType; type <= ComplexArrayType; ++type) {
        SCOPED_TRACE(type);
        parameter.type = type;
        EXPECT_EQ(Evaluate(parameter), Status::Error);
        EXPECT_EQ(text, "ERROR in EvalParam: 'x' value == \"\"\n");
    }
}

TEST_F(EvalParameter, ReadsComplexPairsThroughVariables) {
    Parameter& plain = list.Add("plain", ComplexType, " 1e3-2.5e1 rest");
    EXPECT_EQ(Evaluate(plain), Status::Success);
    EXPECT_TRUE(BlockValue<Complex>(plain.valactual) == MakeComplex(1e3, -25));

    Complex refreshed;
    Declared("z").actual = &refreshed;
    Parameter& named = list.Add("named", ComplexType, "zz");
    EXPECT_EQ(Evaluate(named), Status::Success) << text;
    EXPECT_TRUE(BlockValue<Complex>(named.valactual) == MakeComplex(1.5, -2));
    EXPECT_TRUE(refreshed == MakeComplex(1.5, -2));

    SetText(&named.value, "Loop1");
    EXPECT_EQ(Evaluate(named), Status::Error);
    EXPECT_EQ(text, "ERROR: variable 'Loop1' in parameter 'named' not found\n");
}

TEST_F(EvalParameter, KeptDeliberatelyComplexNamesStartAtBAndTheTypeMessageSaysIntType) {
    Declare("Aname", "1 1", ComplexType);
    Parameter& parameter = list.Add("x", ComplexType, "Aname");
    EXPECT_EQ(Evaluate(parameter), Status::Success);
    EXPECT_TRUE(BlockValue<Complex>(parameter.valactual) == MakeComplex(0, 0));
    SetText(&parameter.value, "Cnumber");
    EXPECT_EQ(Evaluate(parameter), Status::Error);
    EXPECT_EQ(text, "ERROR: variable 'Cnumber' is not type IntType\n");
}

TEST_F(EvalParameter, ReadsCharactersThroughVariables) {
    char refreshed = ' ';
    Declared("letter").actual = &refreshed;
    Parameter& parameter = list.Add("mark", CharType, "alias");
    EXPECT_EQ(Evaluate(parameter), Status::Success) << text;
    EXPECT_EQ(BlockValue<char>(parameter.valactual), 'q');
    EXPECT_EQ(refreshed, 'q');

    SetText(&parameter.value, "ab");
    EXPECT_EQ(Evaluate(parameter), Status::Error);
    EXPECT_EQ(text, "ERROR: variable 'ab' in parameter 'mark' not found\n");
    SetText(&parameter.value, "wrong");
    EXPECT_EQ(Evaluate(parameter), Status::Error);
    EXPECT_EQ(text, "ERROR: variable 'wrong' is not type CharType\n");
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

TEST_F(EvalParameter, ComponentMergesStatusesAndSkipsDrawsAfterAnError) {
    Component component;
    list.Add("warns", DoubleType, "abc");
    Parameter& text1 = list.Add("text", StringType, "");  // not evaluated: no message
    list.Add("fine", IntType, "1");
    Parameter& failing = list.Add("fails", DoubleType, "");
    GiveDraws(failing, {MakeComplex(1), MakeComplex(2)});
    Parameter& after = list.Add("after", StringType, "");
    GiveDraws(after, {MakeComplex(1), MakeComplex(2)});
    GiveDraws(text1, {MakeComplex(1), MakeComplex(2)});
    component.parameters = list.Release();
    EXPECT_EQ(EvalComponentParams(component, &workspace, text), Status::Error);
    EXPECT_EQ(text,
              "WARNING in EvalParam: 'warns' value cannot be evaluated\n"
              "ERROR in EvalParam: 'fails' value == \"\"\n");
    EXPECT_EQ(text1.drawCursor, text1.draws->next);
    EXPECT_EQ(failing.drawCursor, failing.draws);
    EXPECT_EQ(after.drawCursor, after.draws);  // keeps the status of the one before
}

template <class T>
struct ClampCase {
    T value;
    T expected;
    const char* side;  // null: within the limits
    const char* limit;
};

template <class T>
void ExpectClamped(std::int32_t type, T min, T max, std::initializer_list<ClampCase<T>> cases) {
    ParameterList list;
    Parameter& parameter = list.Add("p", type, "x");
    parameter.min = NewBlock(min);
    parameter.max = NewBlock(max);
    parameter.valactual = NewBlock(T{});
    for (const auto& row : cases) {
        SCOPED_TRACE(testing::Message() << "type " << type << " value " << row.value);
        std::memcpy(parameter.valactual, &row.value, sizeof(T));
        std::string text;
        EXPECT_EQ(ClampParam(parameter, text), row.side ? Status::Warning : Status::Success);
        EXPECT_EQ(BlockValue<T>(parameter.valactual), row.expected);
        const std::string message = row.side ? std::string("WARNING: parameter 'p' ") + row.side +
                                                   " value; change to " + row.limit + "\n"
                                             : std::string();
        EXPECT_EQ(text, message);
    }
}

TEST(ClampParameter, MovesValuesToTheirLimits) {
    constexpr const char *less = "less than minimum", *greater = "greater than maximum";
    ExpectClamped<double>(DoubleType, -2.5e-7, 5.0,
                          {{5.0, 5.0, nullptr, nullptr},
                           {-2.5e-7, -2.5e-7, nullptr, nullptr},
                           {6.283, 5.0, greater, "5.000000e+00"},
                           {-1.0, -2.5e-7, less, "-2.500000e-07"},
                           {std::nan(""), -2.5e-7, less, "-2.500000e-07"},
                           {HUGE_VAL, 5.0, greater, "5.000000e+00"}});
    ExpectClamped<std::int32_t>(IntType, -3, 2000000000,
                                {{-4, -3, less, "-3"},
                                 {2000000001, 2000000000, greater, "2000000000"},
                                 {7, 7, nullptr, nullptr}});
    ExpectClamped<std::int16_t>(
        EnumType, 0, 4, {{-1, 0, less, "0"}, {5, 4, greater, "4"}, {4, 4, nullptr, nullptr}});
    // Characters compare as signed: 0xE9 lies below 'a'.
    ExpectClamped<char>(CharType, 'a', 'z',
                        {{'A', 'a', less, "a"},
                         {'~', 'z', greater, "z"},
                         {'\xE9', 'a', less, "a"},
                         {'m', 'm', nullptr, nullptr}});
}

TEST(ClampParameter, AcceptsAbsentLimitsAndRefusesPairs) {
    ParameterList list;
    std::string text;
    Parameter& free = list.Add("free", DoubleType, "1");
    free.valactual = NewBlock(-1e300);
    EXPECT_EQ(ClampParam(free, text), Status::Success);
    EXPECT_EQ(ClampParam(list.Add("words", StringType, "a b"), text), Status::Success);
    EXPECT_EQ(text, "");
    EXPECT_EQ(ClampParam(list.Add("z", ComplexType, "1 2"), text), Status::Error);
    EXPECT_EQ(text, "ERROR: Complex parameter types not yet supported\n");
}

TEST(ClampParameter, KeptDeliberatelyMissingValueIsAWarningTextWithErrorStatus) {
    ParameterList list;
    for (const std::int32_t type : {DoubleType, IntType, CharType, EnumType}) {
        std::string text;
        EXPECT_EQ(ClampParam(list.Add("p", type, "1"), text), Status::Error);
        EXPECT_EQ(text, "WARNING: parameter 'p' has no valactual field");
    }
}

}  // namespace
}  // namespace photrak
