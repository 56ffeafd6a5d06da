// Copies, insertion and lookup of parameter records.
#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "support/parameter_list.h"

namespace photrak {
namespace {

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
