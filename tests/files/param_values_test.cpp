// Saved PARAM blocks against an existing component.
#include "files/param_values.h"

#include <gtest/gtest.h>

#include "files/model_definition.h"
#include "files/param_save.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "support/holds.h"

namespace photrak {
namespace {

constexpr std::string_view definition =
    "COMPONENT Test\n"
    "PARAM gain DoubleType\nMINVALUE 0\nMAXVALUE 9\nVALUE 1\nSTDDEV 0\nPROBDIST NoProbDist\n"
    "UNITS dB\nENDPARAM\n"
    "PARAM patternLength IntType\nMINVALUE 0\nMAXVALUE 18\nVALUE 7\nUNITS bits\nENDPARAM\n"
    "PARAM file StringType\nVALUE\nENDPARAM\n"
    "PARAM mode EnumType\nVALUE a\nFIELD a b c\nENDPARAM\n"
    "PARAM table DoubleArrayType\nROWS 2\nCOLS 2\nDATA\n1 2 3 4\nENDPARAM\n"
    "PARAM ints IntArrayType\nROWS 1\nCOLS 2\nDATA\n1 2\nENDPARAM\n"
    "PARAM taps ComplexArrayType\nROWS 1\nCOLS 3\nDATA\n1 2\n3 4\n5 6\nENDPARAM\n"
    "ENDCOMPONENT\n";

/// A component made from the definition above, as a topology reader makes it.
class ParamValues : public testing::Test {
  protected:
    void SetUp() override {
        Component prototype;
        prototype.name = prototype.type = "Test";
        LineReader reader(definition, "test.def");
        ASSERT_EQ(ReadModelDefinition(prototype, reader, errorText_), Status::Success);
        component_.name = "block";
        ASSERT_EQ(CopyParameterList(&component_.parameters, prototype.parameters), 0);
    }
    Status Read(std::string_view text) {
        LineReader reader(text, "test.top");
        const Status status = ReadParamValues(component_, reader, errorText_);
        lineNumber_ = reader.LineNumber();
        return status;
    }
    Parameter* Find(std::string_view name) { return FindParameter(name, component_.parameters); }
    template <class T>
    std::vector<T> Data(std::string_view name) {
        const auto& array = *static_cast<const ArrayRecord*>(Find(name)->valactual);
        const T* data = static_cast<const T*>(array.data);
        return {data, data + array.rows * array.cols};
    }

    Component component_;
    std::string errorText_;
    int lineNumber_ = 0;
};

TEST_F(ParamValues, OverwritesValuesAndNothingElse) {
    EXPECT_EQ(Read("PARAM gain DoubleType\nMINVALUE 5\nVALUE 2*x\nSTDDEV 0.5\n"
                   "PROBDIST GausProbDist\nUNITS furlong\nENDPARAM\n"
                   "PARAM mode EnumType\nVALUE c\nFIELD c\nENDPARAM\n"
                   "PARAM file StringType\nVALUE a b\"c\nENDPARAM\n"
                   "PARAM patternWidth IntType\nVALUE 9\nENDPARAM\n"  // an alias
                   "NOTE gain\nPARAM unknown DoubleType\nVALUE ENDCOMPONENT\nENDPARAM\n"
                   "PARAM absent float\nENDPARAM\n"  // no parameter's types do not matter
                   "x ENDCOMPONENT trailing\nPARAM gain DoubleType\nVALUE 3\nENDPARAM\n"),
              Status::Success);
    EXPECT_EQ(errorText_, "");
    EXPECT_EQ(lineNumber_, 24) << "the line that holds ENDCOMPONENT ends the read";
    EXPECT_STREQ(Find("gain")->value, "2*x");
    EXPECT_STREQ(Find("gain")->UNITS, "dB");
    EXPECT_EQ(*static_cast<double*>(Find("gain")->min), 0.0);
    EXPECT_EQ(*static_cast<std::int16_t*>(Find("mode")->valactual), 3);
    EXPECT_STREQ(Find("file")->value, "a b") << "a text ends at a double quote";
    EXPECT_STREQ(Find("patternLength")->value, "9");
}

TEST_F(ParamValues, FaultsAreToldAndTheRestIsRead) {
    const std::string unknownType = "PARAM gain float\nVALUE 3\nENDPARAM\n";
    EXPECT_EQ(Read(unknownType + "PARAM table DoubleArrayType\nDATA\n9 8\nENDPARAM\n"
                                 "PARAM file StringType\nVALUE x\nENDPARAM\nENDCOMPONENT\n"),
              Status::Error);
    EXPECT_TRUE(Holds(errorText_, "test.top:1"));
    EXPECT_TRUE(Holds(errorText_, "'block'"));
    EXPECT_STREQ(Find("gain")->value, "1");
    EXPECT_EQ(Data<double>("table"), (std::vector<double>{1, 2, 3, 4})) << "two are too few";
    EXPECT_STREQ(Find("file")->value, "x");
    // By design: as in a definition, the success of an enum is stored as the result.
    errorText_.clear();
    EXPECT_EQ(Read(unknownType + "PARAM mode EnumType\nVALUE b\nENDPARAM\nENDCOMPONENT\n"),
              Status::Success);
    EXPECT_EQ(errorText_, "");
}

// The type word of the line decides how a block reads; no word may make a value of another type.
TEST_F(ParamValues, AForeignTypeWordDoesNoHarm) {
    const double before = *static_cast<double*>(Find("gain")->max);
    EXPECT_EQ(Read("PARAM gain EnumType\nVALUE b\nENDPARAM\n"
                   "PARAM table EnumType\nVALUE b\nENDPARAM\n"
                   "PARAM mode DoubleType\nVALUE zz\nSTDDEV 1\nENDPARAM\nENDCOMPONENT\n"),
              Status::Success);
    EXPECT_STREQ(Find("gain")->value, "b");
    EXPECT_EQ(*static_cast<double*>(Find("gain")->max), before);
    EXPECT_EQ(Data<double>("table"), (std::vector<double>{1, 2, 3, 4}));
}

TEST_F(ParamValues, ArraysTakeElementsAndSteps) {
    EXPECT_EQ(Read("PARAM table DoubleArrayType\nROWS 2\nROWSTEP 2.5\nDATA\n"
                   "5\n6 7\n8 9\nENDPARAM\n"
                   "PARAM taps ComplexArrayType\nDATA\n1 2 3 -4\n5-6\nENDPARAM\nENDCOMPONENT\n"),
              Status::Success)
        << errorText_;
    EXPECT_EQ(Data<double>("table"), (std::vector<double>{5, 6, 7, 8}));
    const auto& table = *static_cast<const ArrayRecord*>(Find("table")->valactual);
    EXPECT_EQ(table.rowStep, 2.5);
    const auto taps = Data<Complex>("taps");
    EXPECT_TRUE(taps[0] == (Complex{1, 2}));
    EXPECT_TRUE(taps[1] == (Complex{3, -4})) << "several pairs may share a line";
    EXPECT_TRUE(taps[2] == (Complex{5, -6})) << "an imaginary part may follow straight on";
    // By design written without a separator: 1 + 2i reads back as 12.
    std::string text;
    WriteParamBlock(*Find("taps"), text);
    EXPECT_TRUE(Holds(text, "DATA \n12\n3-4\n5-6\nENDPARAM\n")) << text;
}

// The record decides on rows and columns; a matrix over the ports of a block may have as many as
// those.
TEST_F(ParamValues, ArraysOfAnotherShapeAreRefusedWithTheNumbers) {
    const std::string threes =
        "PARAM table DoubleArrayType\nROWS 3\nCOLS 3\nDATA\n1 2 3\n4 5 6\n7 8 9\nENDPARAM\n";
    const auto expectRefusal = [&](const std::string& text, const std::string& reason) {
        errorText_.clear();
        EXPECT_EQ(Read(text + "PARAM gain DoubleType\nVALUE 7\nENDPARAM\nENDCOMPONENT\n"),
                  Status::Error);
        EXPECT_EQ(errorText_, "ERROR: test.top:" + reason + "\n");
        EXPECT_EQ(Data<double>("table"), (std::vector<double>{1, 2, 3, 4}));
        EXPECT_STREQ(Find("gain")->value, "7") << "what follows the block is read";
    };
    const std::string given = "array 'table' is given ", has = " columns, it has 2 and 2";
    expectRefusal(threes, "4: " + given + "3 rows and 3" + has);
    expectRefusal("PARAM table DoubleArrayType\nCOLS 1\nENDPARAM\n",
                  "3: " + given + "2 rows and 1" + has);
    component_.NUMINEQNUMOUTNODES = true;
    component_.inputs.resize(3);
    expectRefusal(threes, "4: " + given + "3 rows and 3" + has);  // three inputs, no outputs
    component_.outputs.resize(3);
    errorText_.clear();
    EXPECT_EQ(Read(threes + "ENDCOMPONENT\n"), Status::Success) << errorText_;
    EXPECT_EQ(Data<double>("table"), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(Read("PARAM taps ComplexArrayType\nROWS 3\nCOLS 3\nDATA\n1 2 3 4 5 6\n1 2 3 4 5 6\n"
                   "1 2 3 4 5 6\nENDPARAM\nENDCOMPONENT\n"),
              Status::Error)
        << "no matrix over ports";
}

// By design: the definition reads IntArrayType as a binary array, so the word of a saved
// block does not match it.
TEST_F(ParamValues, AMismatchedArrayWordFailsAndReadsAllTheSame) {
    EXPECT_EQ(Read("PARAM ints IntArrayType\nDATA\n5 6\nENDPARAM\nENDCOMPONENT\n"), Status::Error);
    EXPECT_EQ(Data<std::int16_t>("ints"), (std::vector<std::int16_t>{5, 6}));
}

TEST_F(ParamValues, ATextMayEndAnywhere) {
    const std::string whole =
        "PARAM gain DoubleType\nVALUE 2\nENDPARAM\nPARAM table DoubleArrayType\nDATA\n1\n2\n3\n4\n"
        "ENDPARAM\nPARAM gone IntType\nENDPARAM\nENDCOMPONENT";
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        EXPECT_EQ(Read(whole.substr(0, size)) == Status::Success, size == whole.size()) << size;
    }
}

}  // namespace
}  // namespace photrak
