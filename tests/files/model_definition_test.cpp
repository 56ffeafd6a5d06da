// The grammar of model definitions: keywords, parameter blocks, arrays, broken files.
#include "files/model_definition.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "support/holds.h"
#include "support/parameter_list.h"

namespace photrak {
namespace {

/// A definition read from a text.
struct ReadResult {
    Component prototype;
    std::string errorText;
    Status status;

    explicit ReadResult(std::string_view text, const char* type = "Test") {
        prototype.name = prototype.type = type;
        LineReader reader(text, "test.def");
        status = ReadModelDefinition(prototype, reader, errorText);
    }
    Parameter* Find(std::string_view name) { return FindParameter(name, prototype.parameters); }
    std::string Names() const {
        std::string names;
        for (const Parameter& parameter : Items(prototype.parameters)) {
            names += Concat(parameter.name, " ");
        }
        return names;
    }
};

const ArrayRecord& ArrayOf(const Parameter* parameter) {
    return *static_cast<const ArrayRecord*>(parameter->valactual);
}

std::vector<std::int32_t> Codes(const std::vector<Port>& ports) {
    std::vector<std::int32_t> codes;
    for (const Port& port : ports) codes.push_back(port.sigType);
    return codes;
}

TEST(ModelDefinition, FillsThePrototype) {
    ReadResult read(
        "NOTE this line is used up whatever it says\n"
        "ICON fiberu.bmp 0 0\n"
        "  NOTE \"A fiber: with blanks\"\n"
        "MININPUTS 1\r\nMAXINPUTS 2\n\nMINOUTPUTS 3\nMAXOUTPUTS 4\n"
        "NUMINPUTNODES 1\nNUMOUTPUTS 3\nNUMINPUTS 2\n"
        "NUMINEQNUMOUTNODES TRUE\nTESTOUTPUTMODE YesTestOutput\n"
        "INSIGTYPES BinSigType\n"
        "INSIGTYPES OpSigType:ElecSigType ... RepeatTwo OpOrElecSigType\tEtcSigType\n"
        "OUTSIGTYPES NoSigType ... RepeatTwo UnknownSigType\n"
        "COLOR blue\n"
        "ENDCOMPONENT \n"
        "ICON still.bmp\n"
        "ENDCOMPONENT\n"
        "ICON no.bmp\n");
    const Component& c = read.prototype;
    EXPECT_EQ(read.status, Status::Success);
    EXPECT_EQ(read.errorText, "");
    EXPECT_EQ(c.NOTE, "A fiber: with blanks");
    EXPECT_EQ(c.ICON, "still.bmp");
    EXPECT_EQ((std::vector{c.MININPUTS, c.MAXINPUTS, c.MINOUTPUTS, c.MAXOUTPUTS, c.NUMINPUTS,
                           c.NUMOUTPUTS, c.NUMINEQNUMOUTNODES + 0, c.testOutput + 0}),
              (std::vector{1, 2, 3, 4, 2, 3, 1, 1}));
    EXPECT_EQ(Codes(c.inputs), (std::vector{0, 1, 7, 4, 6}));
    EXPECT_EQ(Codes(c.outputs), (std::vector{5, 4, 4}));
    EXPECT_EQ(ReadResult("SuperBlock amp 1\n", "SuperBlock").prototype.superBlockFile, "amp");

    ReadResult hostile("COMPONENT T\nMAXINPUTS 2000000000\nNUMINPUTS -5\nMAXOUTPUTS nan\n");
    EXPECT_EQ(hostile.status, Status::Success);
    EXPECT_LE(hostile.prototype.MAXINPUTS, 100000);
    EXPECT_EQ(hostile.prototype.NUMINPUTS, 0);
    EXPECT_EQ(hostile.prototype.MAXOUTPUTS, 0);
}

TEST(ModelDefinition, ReadsEachScalarTypeWithItsOwnKeywords) {
    ReadResult read(
        "COMPONENT Test\n"
        "PARAM gain StringType\nVALUE replaced by the next\nENDPARAM\n"
        "PARAM gain DoubleType\nDESC Gain: \"small\" signal\nMINVALUE -1.5\n"
        "VALUE 2*pi + x\nSTDDEV 0.1\nPROBDIST UniformProbDist\nUNITS \"dB or so\"\nFIELD no\n"
        "ENDPARAM\n"
        "PARAM blank IntType\nVALUE: \"12\"\nDESC too late\nENDPARAM\n"
        "PARAM z ComplexType\nMINVALUE -2\nMAXVALUE 3\nVALUE 1 2\nSTDDEV 4\nISTDDEV 5\n"
        "PROBDIST GausProbDist\nIPROBDIST TwoSigmaGausProbDist\nUNITS V\nENDPARAM\n"
        "ENDCOMPONENT\n");
    ASSERT_EQ(read.status, Status::Success) << read.errorText;
    EXPECT_EQ(read.Names(), "blank gain z ");
    const Parameter* gain = read.Find("gain");
    EXPECT_STREQ(gain->DESC, "Gain: \"small\" signal");
    EXPECT_STREQ(gain->value, "2*pi + x");
    EXPECT_STREQ(gain->UNITS, "dB or so");
    EXPECT_EQ(gain->PROBDIST, UniformProbDist);
    EXPECT_EQ(BlockValue<double>(gain->min), -1.5);
    EXPECT_GT(BlockValue<double>(gain->max), 1e300) << "a missing limit is the widest";
    const Parameter* blank = read.Find("blank");
    EXPECT_STREQ(blank->value, " ") << "the blank after the colon is the value";
    EXPECT_STREQ(blank->DESC, "") << "a description is the first line of its block";
    const Parameter* z = read.Find("z");
    EXPECT_STREQ(z->value, "1 2");
    EXPECT_STREQ(z->ISTDDEV, "5");
    EXPECT_EQ(z->PROBDIST, GausProbDist);
    EXPECT_EQ(BlockValue<double>(z->max), 3.0);
}

TEST(ModelDefinition, EnumFieldsResolveToPositions) {
    const struct {
        const char *value, *fields;
        int position, count;
    } cases[] = {
        {"two", "one,two:three\tfour", 2, 4},
        {"five", "one two", 0, 2},
        {"two", " , two  two", 1, 2},
        {"", "", 0, 0},
    };
    for (const auto& row : cases) {
        ReadResult read(Concat("COMPONENT Test\nPARAM e EnumType\nVALUE ", row.value, "\nFIELD ",
                               row.fields, "\nENDPARAM\n"));
        const Parameter* e = read.Find("e");
        ASSERT_NE(e, nullptr);
        EXPECT_EQ(BlockValue<std::int16_t>(e->valactual), row.position) << row.fields;
        EXPECT_EQ(BlockValue<std::int16_t>(e->max), row.count) << row.fields;
        EXPECT_STREQ(e->UNITS, row.fields);
    }
}

constexpr std::string_view badBlock = "PARAM bad float\nVALUE 1\nENDPARAM\n";
constexpr std::string_view goodBlock = "PARAM good StringType\nVALUE v\nENDPARAM\n";
constexpr std::string_view enumBlock = "PARAM e EnumType\nVALUE a\nFIELD a b\nENDPARAM\n";

TEST(ModelDefinition, UnknownTypeFailsAndDropsWhatFollows) {
    for (const char* word : {"float", "UnknownType", ""}) {
        ReadResult read(Concat("COMPONENT Test\nPARAM bad ", word, "\nVALUE 1\nENDPARAM\n",
                               goodBlock, "ICON i.bmp\n"));
        EXPECT_EQ(read.status, Status::Error) << word;
        EXPECT_EQ(read.Names(), "") << "nothing is kept while the file's result is an error";
        EXPECT_EQ(read.prototype.ICON, "i.bmp") << "ports and texts are read all the same";
        EXPECT_TRUE(Holds(read.errorText, "test.def:2"));
        EXPECT_TRUE(Holds(read.errorText, "'bad'"));
    }
}

// By design: the result of an enum's fields is stored as the result of the file.
TEST(ModelDefinition, AnEnumClearsTheFailureOfABlockBeforeIt) {
    ReadResult read(Concat("COMPONENT Test\n", badBlock, enumBlock, goodBlock));
    EXPECT_EQ(read.status, Status::Success);
    EXPECT_EQ(read.errorText, "");
    EXPECT_EQ(read.Names(), "e good ");
    EXPECT_EQ(ReadResult(Concat("COMPONENT Test\n", enumBlock, badBlock)).status, Status::Error);
}

TEST(ModelDefinition, ReadsArraysInRows) {
    ReadResult read(
        "COMPONENT Test\n"
        "PARAM d DoubleArrayType\nDESC table\nROWS 2\nCOLS 3\nROWSTEP 0.5\nCOLSTEPTITLE \"a b\"\n"
        "DATA\n1 2.5\n\n-3e2:4\n5 6 7\nENDPARAM\n"
        "PARAM i IntArrayType\nROWS 1\nCOLS 2\nDATA\n70000 2\nENDPARAM\n"
        "PARAM z ComplexArrayType\nROWS 1\nCOLS 2\nDATA\n1 2 3 4\n5\nENDPARAM\n"
        "PARAM none DoubleArrayType\nENDPARAM\n");
    ASSERT_EQ(read.status, Status::Success) << read.errorText;
    const ArrayRecord& d = ArrayOf(read.Find("d"));
    const auto* values = static_cast<const double*>(d.data);
    EXPECT_EQ(std::vector<double>(values, values + 6),
              (std::vector<double>{1, 2.5, -300, 4, 5, 6}));
    EXPECT_EQ(d.rows * 10 + d.cols, 23);
    EXPECT_EQ(d.rowStep, 0.5);
    EXPECT_STREQ(d.colStepTitle, "a b");
    // By design: the code of a binary array over elements of 32 bits.
    EXPECT_EQ(read.Find("i")->type, BinaryArrayType);
    EXPECT_EQ(*static_cast<const std::int32_t*>(ArrayOf(read.Find("i")).data), 70000);
    const auto* pairs = static_cast<const Complex*>(ArrayOf(read.Find("z")).data);
    EXPECT_TRUE(pairs[0] == (Complex{1, 2})) << "one pair of each line, whatever else it holds";
    EXPECT_TRUE(pairs[1] == (Complex{5, 0}));
    EXPECT_EQ(ArrayOf(read.Find("none")).data, nullptr);
}

TEST(ModelDefinition, RefusesArraysThatTheTextDoesNotHold) {
    for (const char* body : {
             "ROWS 2147483647\nCOLS 2147483647\nDATA\n1 2 3\n", "ROWS -1\nCOLS -1\nDATA\n1\n",
             "ROWS 2\nCOLS 2\nDATA\n1 2 3\n",            // the block ends one short
             "ROWS 1\nCOLS 1\nDATA\n1\nROWS 1000000\n",  // grown behind its data
         }) {
        ReadResult read(Concat("COMPONENT Test\nPARAM a DoubleArrayType\n", body, "ENDPARAM\n",
                               "ICON i.bmp\n"));
        EXPECT_EQ(read.status, Status::Error) << body;
        EXPECT_EQ(read.Find("a"), nullptr) << body;
        EXPECT_EQ(read.prototype.ICON, "i.bmp") << body;
    }
}

TEST(ModelDefinition, ATextThatEndsInsideABlockNamesTheBlock) {
    const std::string whole =
        "COMPONENT Test\nPARAM gain DoubleArrayType\nDESC d\nROWS 1\nCOLS 2\nDATA\n1\n2\nENDPARAM";
    for (std::size_t size = whole.find("PARAM") + 26; size < whole.size(); ++size) {
        ReadResult read(whole.substr(0, size));
        EXPECT_EQ(read.status, Status::Error) << size;
        EXPECT_TRUE(Holds(read.errorText, "gain"));
    }
    EXPECT_EQ(ReadResult(whole).status, Status::Success);
}

}  // namespace
}  // namespace photrak
