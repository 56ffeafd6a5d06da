// Every model's table of parameters against its definition, both ways, and the dispatch against the
// catalogue.
#include <cmath>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

#include "base/units.h"
#include "files/catalogue.h"
#include "kernel/parameters.h"
#include "models/dispatch.h"
#include "support/catalogue_block.h"
#include "support/parameter_list.h"
#include "support/paths.h"

namespace photrak {
namespace {

class ParamTables : public testing::Test {
  protected:
    ParamTables() {
        EXPECT_EQ(InitializeModels(SourceDir() + "/catalogue/", catalogue_, text_), Status::Success)
            << text_;
    }
    const Component* Definition(std::string_view type) { return FindModel(catalogue_, type); }

    Catalogue catalogue_;
    std::string text_;
};

constexpr std::int32_t typeCodes[] = {DoubleType, IntType, EnumType, StringType, DoubleArrayType};

std::set<std::string> WordsOf(std::string_view list) {
    std::set<std::string> words;
    std::istringstream stream{std::string(list)};
    for (std::string word; stream >> word;) words.insert(word);
    return words;
}

double InRecordUnit(const ParamSpec& spec, double typed) {
    switch (spec.unit) {
        case ParamUnit::PowerDecibels:
            return PowerRatio(typed);
        case ParamUnit::FieldDecibels:
            return FieldRatio(typed);
        case ParamUnit::Dbm:
            return WattsFromDbm(typed);
        default:
            return typed;
    }
}

/// A definition may not let through what the model refuses: both ends of its limits are in range,
/// and so is all between but for the 0 of NotZero.
void ExpectLimitsInRange(const ParamSpec& spec, const Parameter& parameter) {
    std::string text;
    for (const void* limit : {parameter.min, parameter.max}) {
        if (!limit) continue;
        const double typed =
            parameter.type == IntType ? BlockValue<std::int32_t>(limit) : BlockValue<double>(limit);
        if (spec.range == Range::NotZero && typed == 0.0) continue;
        EXPECT_EQ(CheckRange({"block", text}, spec.name, InRecordUnit(spec, typed), spec.range),
                  Status::Success)
            << text << "but the definition lets it through";
    }
}

void ExpectSame(const ParamSpec& spec, const Parameter& parameter) {
    SCOPED_TRACE(parameter.name);
    EXPECT_EQ(parameter.type, typeCodes[static_cast<int>(spec.kind)]);
    switch (spec.kind) {
        case ParamKind::Number:
        case ParamKind::Whole:
            EXPECT_EQ(std::strtod(parameter.value, nullptr), spec.number);
            ExpectLimitsInRange(spec, parameter);
            break;
        case ParamKind::Word:
            EXPECT_EQ(WordsOf(parameter.UNITS), WordsOf(spec.words));
            EXPECT_TRUE(WordsOf(spec.words).contains(std::string(spec.text))) << spec.text;
            [[fallthrough]];
        case ParamKind::Text:
            EXPECT_EQ(parameter.value, spec.text);
            break;
        case ParamKind::Array:
            break;
    }
}

TEST_F(ParamTables, AgreeWithTheDefinitions) {
    for (const ModelEntry& entry : BuiltInModels()) {
        SCOPED_TRACE(entry.type);
        const Component* definition = Definition(entry.type);
        if (!definition || !entry.params) continue;
        std::set<std::string, std::less<>> inTable;
        for (const ParamSpec& spec : entry.params()) {
            EXPECT_TRUE(inTable.emplace(spec.name).second) << spec.name << " stands twice";
            const Parameter* parameter = FindParameter(spec.name, definition->parameters);
            if (parameter) {
                ExpectSame(spec, *parameter);
            } else {
                ADD_FAILURE() << "no parameter '" << spec.name << "' in the definition";
            }
        }
        for (const Parameter& parameter : Items(definition->parameters)) {
            EXPECT_TRUE(inTable.contains(parameter.name))
                << "the table has no row for '" << parameter.name << "'";
        }
    }
}

}  // namespace
}  // namespace photrak
