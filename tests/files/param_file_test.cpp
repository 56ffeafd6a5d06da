// Parameter files: what is written, read back, limited and refused.
#include "files/param_file.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "files/model_definition.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "support/holds.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

constexpr std::string_view definition =
    "COMPONENT Every\n"
    "PARAM d DoubleType\nMINVALUE 0\nMAXVALUE 9\nVALUE 1\nSTDDEV 0\nPROBDIST NoProbDist\n"
    "UNITS dB\nENDPARAM\n"
    "PARAM i IntType\nMINVALUE 0\nMAXVALUE 9\nVALUE 1\nUNITS bits\nENDPARAM\n"
    "PARAM z ComplexType\nVALUE 1 2\nUNITS A\nENDPARAM\n"
    "PARAM c CharType\nMINVALUE a\nMAXVALUE z\nVALUE q\nENDPARAM\n"
    "PARAM s StringType\nVALUE\nENDPARAM\n"
    "PARAM e EnumType\nVALUE one\nFIELD one two three\nENDPARAM\n"
    "PARAM da DoubleArrayType\nROWS 2\nCOLS 2\nXUNITS m\nDATA\n1 2 3 4\nENDPARAM\n"
    "PARAM ba BinaryArrayType\nROWS 1\nCOLS 2\nDATA\n1 0\nENDPARAM\nENDCOMPONENT\n";

constexpr std::string_view setValues =
    "COMPONENT other Every\nNOTE 100 % of %s\n"
    "PARAM d DoubleType\nVALUE 2*x\nSTDDEV y\nPROBDIST TwoSigmaGausProbDist\nENDPARAM\n"
    "PARAM i IntType\nVALUE 7\nENDPARAM\n"
    "PARAM z ComplexType\nVALUE 3 -4\nSTDDEV 1\nPROBDIST GausProbDist\nISTDDEV 2\n"
    "IPROBDIST UniformProbDist\nENDPARAM\n"
    "PARAM c CharType\nVALUE k\nENDPARAM\n"
    "PARAM s StringType\nVALUE a  b: ENDCOMPONENT %n\nENDPARAM\n"
    "PARAM e EnumType\nVALUE three\nENDPARAM\n"
    "PARAM da DoubleArrayType\nROWSTEP 0.25\nCOLSTEPTITLE two words\nXUNITS km\nDATA\n"
    "-1e-300\n2.5\n3e22\n4\nENDPARAM\n"
    "PARAM ba BinaryArrayType\nDATA\n0\n1\nENDPARAM\n"
    "ENDCOMPONENT\n";

class ParamFile : public testing::Test {
  protected:
    void SetUp() override {
        LineReader reader(definition, "every.def");
        std::string faults;
        prototype_.name = prototype_.type = "Every";
        ASSERT_EQ(ReadModelDefinition(prototype_, reader, faults), Status::Success) << faults;
        workspace_ = CreateWorkspace();
        AddVariable(*workspace_, "x", DoubleType, "4");
        AddVariable(*workspace_, "y", DoubleType, "0.5");
        component_ = Make("block");
    }
    Component* Make(const std::string& name) {
        return CreateComponentFrom(prototype_, name, 0, 0, workspace_->components);
    }
    Status Load(std::string_view text, Component* into = nullptr) {
        text_.clear();
        return LoadParamText(into ? *into : *component_, *workspace_, text, "x.prm", text_);
    }
    /// A file with one number.
    static std::string Number(std::string_view value, std::string_view head = "a Every") {
        return Concat("COMPONENT ", head, "\nPARAM d DoubleType\nVALUE ", value,
                      "\nENDPARAM\nENDCOMPONENT\n");
    }
    static std::string Text(const Component& component) {
        std::string out;
        EXPECT_EQ(ParamFileText(component, out), Status::Success);
        return out;
    }
    const char* ValueOf(std::string_view name) {
        return FindParameter(name, component_->parameters)->value;
    }
    double Number() {
        return *static_cast<double*>(FindParameter("d", component_->parameters)->valactual);
    }

    Component prototype_;
    std::unique_ptr<Workspace> workspace_;
    Component* component_ = nullptr;
    std::string text_;
};

TEST_F(ParamFile, EveryTypeComesBackFromAFileAsItWas) {
    ASSERT_EQ(Load(setValues), Status::Success) << text_;
    EXPECT_EQ(Number(), 8.0) << "evaluated over the variables";
    const TempDir directory;
    ASSERT_EQ(SaveParamFile(*component_, "saved.prm", text_), Status::Success) << text_;
    const std::string saved = directory.Read("saved.prm");
    EXPECT_TRUE(saved.starts_with("COMPONENT block Every\nNOTE 100 % of %s\n\nPARAM ba Binary"))
        << saved;
    EXPECT_TRUE(Holds(saved,
                      "\nENDPARAM\n\nPARAM d DoubleType\nVALUE 2*x\nSTDDEV y\n"
                      "PROBDIST TwoSigmaGausProbDist\nUNITS dB\nENDPARAM\n\nPARAM da "))
        << saved;
    EXPECT_TRUE(saved.ends_with("UNITS A\nENDPARAM\n\nENDCOMPONENT\n")) << saved;
    EXPECT_TRUE(Holds(saved, "\nVALUE a  b: ENDCOMPONENT %n\n"));
    EXPECT_TRUE(Holds(saved, "ISTDDEV 2\nIPROBDIST UniformProbDist\n"));

    Component* other = Make("block");
    ASSERT_EQ(LoadParamFile(*other, *workspace_, "saved.prm", text_), Status::Success) << text_;
    EXPECT_EQ(text_, "");
    EXPECT_EQ(Text(*other), saved);
    const auto& array =
        *static_cast<ArrayRecord*>(FindParameter("da", other->parameters)->valactual);
    EXPECT_EQ(static_cast<double*>(array.data)[0], -1e-300);
    EXPECT_EQ(array.rowStep, 0.25);
    EXPECT_FALSE(workspace_->symbols.entries) << "the table of a load does not stay";
}

TEST_F(ParamFile, ValuesAreLimitedAndTheirTextStays) {
    EXPECT_EQ(Load(Number("3*x")), Status::Warning);
    EXPECT_EQ(text_, "WARNING: parameter 'd' greater than maximum value; change to 9.000000e+00\n");
    EXPECT_EQ(Number(), 9.0);
    EXPECT_STREQ(ValueOf("d"), "3*x");
    EXPECT_EQ(Load(Number("nan") + Number("2")), Status::Warning) << "the first block's";
    EXPECT_EQ(Number(), 2.0) << "all blocks of a file apply";
}

TEST_F(ParamFile, TheNoteIsReplacedUnlessEmpty) {
    component_->NOTE = "first";
    EXPECT_EQ(Load("COMPONENT a Every\nNOTE\nENDCOMPONENT\n"), Status::Success);
    EXPECT_EQ(component_->NOTE, "first");
    EXPECT_EQ(Load("COMPONENT a Every\nNOTE cut \"here\nENDCOMPONENT\n"), Status::Success);
    EXPECT_EQ(component_->NOTE, "cut ");
    EXPECT_EQ(Load(Number("5")), Status::Success) << "a block without a note";
    EXPECT_EQ(Number(), 5.0);
}

TEST_F(ParamFile, AnotherModelsFileIsRefused) {
    const struct {
        std::string text, message;
    } rows[] = {
        {"COMPONENT\n" + Number("7"), "Error: Component name missing in parameter file"},
        {"COMPONENT a\n", "Component type missing in parameter file"},
        {Number("7", "block Else%s"), "Error: Parameter file model type doesn't match component"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Load(row.text), Status::Error);
        EXPECT_EQ(text_, row.message);
        EXPECT_STREQ(ValueOf("d"), "1") << row.message;
    }
    EXPECT_EQ(Load(Number("7", "a Every Span")), Status::Success) << "only one side has a file";
    component_->superBlockFile = "Span";
    EXPECT_EQ(Load(Number("7", "a Every Span")), Status::Success);
    EXPECT_EQ(Load(Number("8", "a Every Other")), Status::Error);
    EXPECT_STREQ(ValueOf("d"), "7");
    EXPECT_TRUE(Text(*component_).starts_with("COMPONENT block Every Span\n"));
    EXPECT_EQ(Load("# nothing\n\nCOMPONENTS a b\n"), Status::Success);
    EXPECT_EQ(text_, "") << "a file without a block loads nothing";
}

TEST_F(ParamFile, FaultsNameTheLineAndKeepWhatWasSetBefore) {
    const std::string wrong =
        "COMPONENT a Every\nPARAM d DoubleType\nVALUE 6\nENDPARAM\n"
        "PARAM da IntArrayType\nDATA\n1 2 3 4\nENDPARAM\nENDCOMPONENT\n";
    EXPECT_EQ(Load(wrong + Number("12")), Status::Error) << "a later warning replaces no error";
    EXPECT_TRUE(text_.starts_with("Error loading parameters: ERROR: x.prm:")) << text_;
    EXPECT_TRUE(Holds(text_, "'da'"));
    EXPECT_STREQ(ValueOf("d"), "12");
    EXPECT_EQ(Load("COMPONENT a Every\nPARAM c CharType\nVALUE nowhere\nENDPARAM\n"
                   "ENDCOMPONENT\n"),
              Status::Error);
    EXPECT_TRUE(Holds(text_, "variable 'nowhere' in parameter 'c' not found")) << text_;
    EXPECT_EQ(Load(setValues.substr(0, setValues.size() - 14)), Status::Error);
    EXPECT_TRUE(Holds(text_, "the text ends inside component 'block'")) << text_;
    EXPECT_EQ(LoadParamFile(*component_, *workspace_, "/", text_ = ""), Status::Error);
    EXPECT_EQ(text_, "Cannot open file to load parameters.");
}

TEST_F(ParamFile, HugeFilesAreBounded) {
    std::string blocks;
    for (int i = 0; i < 2000; ++i) blocks += Number("nowhere");
    EXPECT_EQ(Load(blocks), Status::Error);
    EXPECT_LT(text_.size(), 50'000u);
    EXPECT_TRUE(Holds(text_, "Error loading parameters: "));
    for (int i = 0; i < 2000; ++i) AddVariable(*workspace_, Concat("v", i), DoubleType, "1");
    EXPECT_EQ(Load(Number("2")), Status::Error) << "more variables than the symbol table holds";
}

TEST_F(ParamFile, SavingAppendsTheSuffixAndFailsWithItsText) {
    const struct {
        const char *chosen, *name;
    } rows[] = {{"a", "a.prm"},   {"a.b", "a.b"}, {"x.d/a", "x.d/a.prm"},
                {"x/", "former"}, {"", "former"}, {"x/.a", "x/.a"}};
    for (const auto& row : rows) EXPECT_EQ(ParamFileName(row.chosen, "former"), row.name);
    EXPECT_EQ(SaveParamFile(*component_, "/nowhere/a.prm", text_), Status::Error);
    EXPECT_TRUE(text_.starts_with("Cannot open file to save parameters. (")) << text_;
    const TempDir directory;
    FindParameter("s", component_->parameters)->type = 2;  // no type of a file
    EXPECT_EQ(SaveParamFile(*component_, "a.prm", text_ = ""), Status::Error);
    EXPECT_EQ(text_, "Error saving parameters.");
    EXPECT_TRUE(directory.Read("a.prm").ends_with("\nENDCOMPONENT\n"));
}

}  // namespace
}  // namespace photrak
