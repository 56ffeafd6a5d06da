// The parameters of a model as one table: name, member of the model's record, default, range and
// unit. The record is read and checked from it, and a test holds it against the model's definition
// file, both ways. A parameter that has no effect is a row that says so.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "kernel/model_report.h"
#include "kernel/parameters.h"

namespace photrak {

/// What the arithmetic of a model bears, whatever a file, an expression or a random draw gave. The
/// definition's limits keep users within reason; every number within them must be in range, but for
/// the 0 of NotZero. All but Any are finite.
enum class Range { Any, Finite, NotZero, NotNegative, Positive };

/// The form in which a definition gives a number. The record holds factors, W and radians.
enum class ParamUnit { AsTyped, PowerDecibels, FieldDecibels, Dbm, Degrees };

/// What a user sets: a real or whole number, one of some words, free text, a matrix.
enum class ParamKind { Number, Whole, Word, Text, Array };

/// A row without its member: what a definition must agree with.
struct ParamSpec {
    std::string_view name;
    ParamKind kind;
    double number;           // default of a Number or Whole, as typed
    std::string_view text;   // default of a Word or Text
    std::string_view words;  // of a Word: all that are known, separated by single blanks
    Range range = Range::Any;
    ParamUnit unit = ParamUnit::AsTyped;
    bool hasEffect = true;
    std::string_view whenAbsent = {};             // of a Word, if that is not the default
    std::optional<double> numberWhenAbsent = {};  // the same of a Number
    bool sharesMember = false;  // with a row above it, which then has no place of its own
};

/// The words of an enumeration, separated by single blanks.
struct Words {
    std::string_view list;
    std::string_view whenAbsent = {};  // instead of the default, for a block without the parameter
};
/// Marks a parameter that the definition offers and the model does not read.
struct NoEffect {
    bool operator==(const NoEffect&) const = default;
};

template <class Record>
struct ParamRow {
    using StoreWord = void (*)(Record& record, std::string_view word);
    using Member = std::variant<NoEffect, double Record::*, std::int32_t Record::*,
                                std::string Record::*, StoreWord, const ArrayRecord * Record::*>;

    ParamSpec spec;
    Member member = NoEffect{};

    constexpr ParamRow(std::string_view name, double Record::*place, double fallback,
                       Range range = Range::Finite, ParamUnit unit = ParamUnit::AsTyped)
        : spec{name, ParamKind::Number, fallback, {}, {}, range, unit}, member(place) {}
    constexpr ParamRow(std::string_view name, std::int32_t Record::*place, std::int32_t fallback,
                       Range range = Range::Any)
        : spec{name, ParamKind::Whole, static_cast<double>(fallback), {}, {}, range},
          member(place) {}
    constexpr ParamRow(std::string_view name, std::string Record::*place, std::string_view fallback)
        : spec{name, ParamKind::Text, 0.0, fallback, {}}, member(place) {}
    constexpr ParamRow(std::string_view name, std::string Record::*place, std::string_view fallback,
                       Words words)
        : spec{name, ParamKind::Word, 0.0, fallback, words.list}, member(place) {
        spec.whenAbsent = words.whenAbsent;
    }
    /// A word that is stored as something else: a captureless function turns it into that.
    constexpr ParamRow(std::string_view name, StoreWord store, std::string_view fallback,
                       Words words)
        : spec{name, ParamKind::Word, 0.0, fallback, words.list}, member(store) {
        spec.whenAbsent = words.whenAbsent;
    }
    /// A matrix of doubles, borrowed from the block; null without one.
    constexpr ParamRow(std::string_view name, const ArrayRecord* Record::*place)
        : spec{name, ParamKind::Array, 0.0, {}, {}}, member(place) {}
    constexpr ParamRow(std::string_view name, NoEffect, double fallback,
                       ParamKind kind = ParamKind::Number)
        : spec{name, kind, fallback, {}, {}} {
        spec.hasEffect = false;
    }
    constexpr ParamRow(std::string_view name, NoEffect, std::string_view fallback, Words words = {})
        : spec{name, words.list.empty() ? ParamKind::Text : ParamKind::Word, 0.0, fallback,
               words.list} {
        spec.hasEffect = false;
    }

    /// The row with another number for a component that lacks the parameter.
    constexpr ParamRow WhenAbsent(double number) const {
        ParamRow row = *this;
        row.spec.numberWhenAbsent = number;
        return row;
    }
    /// False without effect, and for a function, which may serve several rows.
    constexpr bool HasMember() const {
        return spec.hasEffect && !std::holds_alternative<StoreWord>(member);
    }
};

/// The evaluated number of a parameter in the unit of the record; its `numberWhenAbsent` or else
/// its default if it is absent.
double ReadNumber(const ParamSpec& spec, Parameter* list);
std::int32_t ReadWhole(const ParamSpec& spec, Parameter* list);
/// The text of a parameter; its `whenAbsent` or else its default if it is absent.
std::string_view ReadWord(const ParamSpec& spec, Parameter* list);
/// The matrix of a parameter; null if it is absent, not evaluated, empty or of another type.
const ArrayRecord* ReadArray(const ParamSpec& spec, Parameter* list);
/// Refuses a value outside the range. By design the text gives the value that the model works with.
Status CheckRange(const ModelReport& report, std::string_view name, double value, Range range);

/// Sets every member that a row has. Kept out of line: once inlined, GCC 12 warns of members that a
/// record does not have.
template <class Record, std::size_t n>
[[gnu::noinline]] void ReadParams(const ParamRow<Record> (&rows)[n], Parameter* list,
                                  std::type_identity_t<Record>& record) {
    for (const ParamRow<Record>& row : rows) {
        const ParamSpec& spec = row.spec;
        if (const auto* number = std::get_if<double Record::*>(&row.member)) {
            record.** number = ReadNumber(spec, list);
        } else if (const auto* whole = std::get_if<std::int32_t Record::*>(&row.member)) {
            record.** whole = ReadWhole(spec, list);
        } else if (const auto* text = std::get_if<std::string Record::*>(&row.member)) {
            record.** text = ReadWord(spec, list);
        } else if (const auto* store =
                       std::get_if<typename ParamRow<Record>::StoreWord>(&row.member)) {
            (*store)(record, ReadWord(spec, list));
        } else if (const auto* array = std::get_if<const ArrayRecord * Record::*>(&row.member)) {
            record.** array = ReadArray(spec, list);
        }
    }
}

/// The first number that is out of its row's range is refused.
template <class Record, std::size_t n>
Status CheckParams(const ParamRow<Record> (&rows)[n], const std::type_identity_t<Record>& record,
                   const ModelReport& report) {
    for (const ParamRow<Record>& row : rows) {
        double value = 0.0;
        if (const auto* number = std::get_if<double Record::*>(&row.member)) {
            value = record.**number;
        } else if (const auto* whole = std::get_if<std::int32_t Record::*>(&row.member)) {
            value = record.**whole;
        } else {
            continue;
        }
        const Status status = CheckRange(report, row.spec.name, value, row.spec.range);
        if (status != Status::Success) return status;
    }
    return Status::Success;
}

/// All rows of a model that reads its parameters into one or more records.
template <class... Tables>
std::vector<ParamSpec> SpecsOf(const Tables&... tables) {
    std::vector<ParamSpec> specs;
    const auto append = [&]<class Record, std::size_t n>(const ParamRow<Record>(&rows)[n]) {
        for (const ParamRow<Record>& row : rows) {
            const bool shares = std::any_of(rows, &row, [&](const ParamRow<Record>& other) {
                return row.HasMember() && row.member == other.member;
            });
            specs.push_back(row.spec);
            specs.back().sharesMember = shares;
        }
    };
    (append(tables), ...);
    return specs;
}

}  // namespace photrak
