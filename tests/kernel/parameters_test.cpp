// Parameters: evaluation and limits with each message in full; copies, insertion and lookup.
#include <array>
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
    SetText(&pair.value, "Aname");  // by design no name: names start at 'B'
    EXPECT_EQ(Evaluate(pair), Status::Success);
    EXPECT_TRUE(BlockValue<Complex>(pair.valactual) == MakeComplex(0, 0));

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

TEST(ClampParameter, AcceptsAbsentLimitsAndRefusesPairsAndMissingValues) {
    ParameterList list;
    std::string text;
    Parameter& free = list.Add("free", DoubleType, "1");
    free.valactual = NewBlock(-1e300);
    EXPECT_EQ(ClampParam(free, text), Status::Success);
    EXPECT_EQ(text, "");
    EXPECT_EQ(ClampParam(list.Add("z", ComplexType, "1 2"), text), Status::Error);
    EXPECT_EQ(text, "ERROR: Complex parameter types not yet supported\n");
    // By design the text of a warning, and the status of an error.
    text.clear();
    EXPECT_EQ(ClampParam(list.Add("p", DoubleType, "1"), text), Status::Error);
    EXPECT_EQ(text, "WARNING: parameter 'p' has no valactual field");
}

ArrayRecord* NewArray(std::int32_t rows, std::int32_t cols) {
    auto* array = static_cast<ArrayRecord*>(AllocateZeroed(1, sizeof(ArrayRecord)));
    array->rows = rows;
    array->cols = cols;
    array->xUnits = CopyText("nm");
    return array;
}

constexpr std::array doubles = {1.5, 2.5};
constexpr std::array pairs = {1.0, 2.0, 3.0, 4.0};  // of two Complex

/// One parameter with every owned block in use, one with a narrow value, two arrays, and one whose
/// counts promise what is not there.
void FillWithEveryKind(ParameterList& list) {
    Parameter& real = list.Add("real", DoubleType, "1*2");
    real.valactual = NewBlock(2.0);
    real.min = NewBlock(-1.0);
    real.max = NewBlock(3.0);
    real.stddev = NewBlock(0.25);
    real.istddev = NewBlock(0.75);
    real.draws = NewBlock(ParameterDraw{1, 2, nullptr});
    real.drawCursor = real.draws;
    list.Add("choice", EnumType, "red").max = NewBlock(std::int16_t{3});
    const auto addArray = [&](const char* name, std::int32_t type, const auto& elements) {
        ArrayRecord* array = NewArray(1, 2);
        array->data = NewBlock(elements);
        list.Add(name, type, "").valactual = array;
    };
    addArray("doubles", DoubleArrayType, doubles);
    addArray("pairs", ComplexArrayType, pairs);
    list.Add("empty", DoubleArrayType, "").valactual = NewArray(0, 1 << 30);
}

/// The array is of that kind and holds these elements.
template <class T>
void ExpectArray(Parameter* list, const char* name, std::int32_t kind, const T& elements) {
    const auto& array = *static_cast<const ArrayRecord*>(FindParamCursor(list, name)->valactual);
    EXPECT_EQ(array.kind, kind) << name;
    EXPECT_EQ(BlockValue<T>(array.data), elements) << name;
    EXPECT_STREQ(array.xUnits, "nm");
}

TEST(ParameterRecords, CopyIsDeepAndWithoutDraws) {
    ParameterList copy;
    {
        ParameterList original;
        FillWithEveryKind(original);
        ASSERT_EQ(CopyParameterList(&copy.head, original.head), 0);
    }
    const Parameter& real = *copy.head;
    EXPECT_STREQ(real.value, "1*2");
    EXPECT_EQ(BlockValue<double>(real.min), -1.0);
    EXPECT_EQ(BlockValue<double>(real.max), 3.0);
    EXPECT_EQ(*real.stddev + *real.istddev, 1.0);
    EXPECT_EQ(real.draws, nullptr);
    EXPECT_EQ(real.drawCursor, nullptr);
    EXPECT_EQ(BlockValue<std::int16_t>(FindParamCursor(copy.head, "choice")->max), 3);

    ExpectArray(copy.head, "doubles", 0, doubles);
    ExpectArray(copy.head, "pairs", 3, pairs);
    const void* empty = FindParamCursor(copy.head, "empty")->valactual;
    EXPECT_EQ(static_cast<const ArrayRecord*>(empty)->data, nullptr);
}

TEST(ParameterRecords, InsertsInByteOrderAndReplacesOfTheSameName) {
    ParameterList list;
    for (const char* name : {"b", "a", "C", "a1", "b", "a"}) {
        InsertParameterSorted(&list.head, ParameterList::NewParameter(name, IntType, "old"));
    }
    InsertParameterSorted(&list.head, ParameterList::NewParameter("a1", DoubleType, "new"));
    std::string names;
    for (Parameter* p = list.head; p; p = p->next) names += std::string(p->name) + " ";
    EXPECT_EQ(names, "C a a1 b ");
    EXPECT_STREQ(FindParamCursor(list.head, "a1")->value, "new");
}

TEST(ParameterLookup, GoesOnBehindTheLastMatchAndRoundTheList) {
    ParameterList list, other;
    list.Add("x", IntType, "1");
    list.Add("y", IntType, "2");
    list.Add("x", IntType, "3");
    other.Add("x", IntType, "4");
    ForgetParamCursor();
    const struct {
        Parameter* list;
        const char *name, *value;  // null: not found, and moves nothing
    } rows[] = {{list.head, "x", "1"},     {list.head, "x", "3"}, {list.head, "x", "1"},
                {list.head, "z", nullptr}, {list.head, "x", "3"}, {list.head, "y", "2"},
                {other.head, "x", "4"},    {list.head, "x", "1"},  // another list between resets
                {nullptr, "x", nullptr}};
    for (const auto& row : rows) {
        const Parameter* found = FindParamCursor(row.list, row.name);
        EXPECT_STREQ(found ? found->value : nullptr, row.value) << &row - rows;
    }
}

TEST(ParameterLookup, ForgetsFreedParameters) {
    ParameterList list;
    list.Add("a", IntType, "1");
    InsertParameterSorted(&list.head, ParameterList::NewParameter("b", IntType, "1"));
    InsertParameterSorted(&list.head, ParameterList::NewParameter("c", IntType, "1"));
    EXPECT_NE(FindParamCursor(list.head, "b"), nullptr);  // the position is at c, freed next
    InsertParameterSorted(&list.head, ParameterList::NewParameter("c", IntType, "2"));
    EXPECT_STREQ(FindParamCursor(list.head, "c")->value, "2");
}

TEST(ParameterLookup, GivesValuesInTheTypeAskedForOrTheDefault) {
    ParameterList list;
    list.Add("real", DoubleType, "x").valactual = NewBlock(2.75);
    list.Add("huge", DoubleType, "x").valactual = NewBlock(-1e30);
    list.Add("choice", EnumType, "red").valactual = NewBlock(std::int16_t{3});
    list.Add("letter", CharType, "x").valactual = NewBlock('x');
    list.Add("bare", DoubleType, "5");
    EXPECT_EQ(GetParamDouble(list.head, "real", 9), 2.75);
    EXPECT_EQ(GetParamInt(list.head, "real", 9), 2);
    EXPECT_EQ(GetParamInt(list.head, "huge", 9), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(GetParamInt(list.head, "choice", 9), 3);
    for (const char* name : {"letter", "bare", "absent"}) {
        EXPECT_EQ(GetParamDouble(list.head, name, 9), 9.0) << name;
    }
}

}  // namespace
}  // namespace photrak
