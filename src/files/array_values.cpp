// One table of keywords serves both readers of array parameters and their writer. The readers
// differ in who decides the number of elements: ROWS and COLS of the text in a definition, the
// record in a saved block.
#include "files/array_values.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kernel/parameters.h"

namespace photrak {
namespace {

struct ArrayBody {
    ArrayRecord& array;
    std::int32_t rows, cols;  // as the text gives them
};

/// A number that reads back: an infinity is written as one that overflows.
std::string Number(double value) {
    if (std::isinf(value)) return value > 0 ? "1e999" : "-1e999";
    return FormatDefault(value);
}

struct ArrayKeyword {
    std::string_view word;
    bool (*read)(ArrayBody& body, LineReader& reader);
    std::string (*line)(std::string_view keyword, const ArrayRecord& array);
};

template <auto Asked, auto Member>
constexpr ArrayKeyword Count(std::string_view word) {
    return {word,
            [](ArrayBody& body, LineReader& reader) {
                body.*Asked = ReadInt(reader.Word());
                return true;
            },
            [](std::string_view keyword, const ArrayRecord& array) {
                return Concat(keyword, " ", array.*Member, "\n");
            }};
}
template <auto Member>
constexpr ArrayKeyword Step(std::string_view word) {
    return {word,
            [](ArrayBody& body, LineReader& reader) {
                body.array.*Member = ReadDouble(reader.Word());
                return true;
            },
            [](std::string_view keyword, const ArrayRecord& array) {
                return Concat(keyword, " ", Number(array.*Member), "\n");
            }};
}
template <auto Member>
constexpr ArrayKeyword Title(std::string_view word) {
    return {word,
            [](ArrayBody& body, LineReader& reader) {
                return SetText(&(body.array.*Member), reader.Text());
            },
            [](std::string_view keyword, const ArrayRecord& array) {
                return KeywordLine(keyword, array.*Member);
            }};
}

constexpr ArrayKeyword arrayKeywords[] = {
    Count<&ArrayBody::rows, &ArrayRecord::rows>("ROWS"),
    Count<&ArrayBody::cols, &ArrayRecord::cols>("COLS"),
    Step<&ArrayRecord::rowStep>("ROWSTEP"),
    Step<&ArrayRecord::colStep>("COLSTEP"),
    Title<&ArrayRecord::rowStepTitle>("ROWSTEPTITLE"),
    Title<&ArrayRecord::colStepTitle>("COLSTEPTITLE"),
    Title<&ArrayRecord::rowStepUnits>("ROWSTEPUNITS"),
    Title<&ArrayRecord::colStepUnits>("COLSTEPUNITS"),
    Title<&ArrayRecord::xUnits>("XUNITS"),
    Title<&ArrayRecord::yUnits>("YUNITS"),
};

/// How a complex element stands in a text: a line of its own, or a pair that others may follow.
enum class PairsStand { OnLines, InRows };

/// The real part and, straight after it or as the next word, the imaginary part.
Complex ReadPair(std::string_view word, LineReader& reader) {
    std::size_t used = 0;
    const double re = ReadDouble(word, &used);
    const std::string_view after = word.substr(used);
    return {re, ReadDouble(after.empty() ? reader.Word() : after)};
}

/// One element from its word and, for a pair, what follows it.
template <class T>
T ReadElement(std::string_view word, PairsStand pairs, LineReader& reader) {
    using Range = std::numeric_limits<std::int16_t>;
    if constexpr (std::is_same_v<T, double>) return ReadDouble(word);
    if constexpr (std::is_same_v<T, std::int32_t>) return ReadInt(word);
    if constexpr (std::is_same_v<T, std::int16_t>) {
        return static_cast<T>(std::clamp<std::int32_t>(ReadInt(word), Range::min(), Range::max()));
    }
    if constexpr (std::is_same_v<T, Complex>) {
        if (pairs == PairsStand::InRows) return ReadPair(word, reader);
        return {ReadDouble(word), ReadDouble(reader.Word())};
    }
    return {};
}

/// Fills `count` elements from the lines that follow; false if "ENDPARAM" or the end of the text
/// comes first: what follows the block then still reads as what it is.
bool ReadElements(void* data, std::int64_t count, ValueForm form, PairsStand pairs,
                  LineReader& reader) {
    const bool oneOnALine = form == ValueForm::Pair && pairs == PairsStand::OnLines;
    std::int64_t done = 0;
    while (done < count) {
        if (!reader.Next()) return false;
        std::string_view word = reader.Word();
        if (word == "ENDPARAM") return false;
        do {
            if (!word.empty()) {
                WithForm(form, [&]<class T>(std::type_identity<T>) {
                    if constexpr (!std::is_void_v<T>) {
                        static_cast<T*>(data)[done++] = ReadElement<T>(word, pairs, reader);
                    }
                });
            }
            word = oneOnALine ? std::string_view() : reader.Word();
        } while (done < count && !word.empty());
    }
    return true;
}

/// Reads the elements after DATA into fresh memory, which replaces the array only when it is full.
Status ReadData(const ArrayBody& body, ValueForm form, PairsStand pairs, std::string_view name,
                LineReader& reader, std::string& faults) {
    const auto [array, rows, cols] = body;
    const auto fail = [&](std::string_view what) {
        return AddFault(faults, reader,
                        Concat("array '", name, "': DATA of ", body.rows, " rows and ", body.cols,
                               " columns ", what));
    };
    const std::int64_t count = std::int64_t{rows} * cols;
    // An element takes at least a digit and a separator; the last may end the text.
    const bool holds =
        rows >= 0 && cols >= 0 && static_cast<std::uint64_t>(count) <= reader.BytesLeft() / 2 + 1;
    if (!holds) return fail("is more than the text holds");
    OwnedBlock<void> data;
    if (count > 0) {
        data.reset(AllocateZeroed(static_cast<std::size_t>(count), FormBytes(form)));
        if (!data) return fail("does not fit into memory");
    }
    if (!ReadElements(data.get(), count, form, pairs, reader)) return fail("has too few elements");
    Release(array.data);
    array.data = data.release();
    array.rows = rows;
    array.cols = cols;
    return Status::Success;
}

Status StoreArrayKeyword(ArrayBody& body, std::string_view word, LineReader& reader,
                         std::string& faults) {
    for (const auto& row : arrayKeywords) {
        if (row.word != word) continue;
        if (!row.read(body, reader)) return MemoryRanOut(word, reader, faults);
    }
    return Status::Success;
}

bool HasShapeOf(const ArrayBody& body, const ArrayRecord& array) {
    return body.rows == array.rows && body.cols == array.cols;
}

Status RefuseShape(const ArrayBody& body, std::string_view name, const LineReader& reader,
                   std::string& faults) {
    return AddFault(faults, reader,
                    Concat("array '", name, "' is given ", body.rows, " rows and ", body.cols,
                           " columns, it has ", body.array.rows, " and ", body.array.cols));
}

std::string ElementText(double value) {
    return Number(value);
}
std::string ElementText(std::int32_t value) {
    return Concat(value);
}
std::string ElementText(const Complex& value) {
    // By design: nothing separates the two numbers of a complex element, which is the form of the
    // file, although only a signed imaginary part reads back as it was.
    return Number(value.re) + Number(value.im);
}

std::string Element(const ArrayRecord& array, std::int64_t i) {
    return WithForm(FormOfKind(array.kind), [&]<class T>(std::type_identity<T>) {
        if constexpr (std::is_void_v<T>)
            return std::string();
        else
            return ElementText(static_cast<const T*>(array.data)[i]);
    });
}

}  // namespace

bool GiveArray(Parameter& parameter) {
    auto* array = static_cast<ArrayRecord*>(AllocateZeroed(1, sizeof(ArrayRecord)));
    parameter.valactual = array;
    if (!array) return false;
    array->kind = ArrayKind(parameter.type);
    for (char** text : {&array->rowStepTitle, &array->colStepTitle, &array->rowStepUnits,
                        &array->colStepUnits, &array->xUnits, &array->yUnits}) {
        if (!SetText(text, "")) return false;
    }
    return true;
}

Status ReadArrayDefinition(ArrayRecord& array, ValueForm form, std::string_view name,
                           LineReader& reader, std::string& faults) {
    ArrayBody body{array, 0, 0};
    const Status status = ForEachBodyLine(name, reader, faults, [&](std::string_view word) {
        if (word != "DATA") return StoreArrayKeyword(body, word, reader, faults);
        return ReadData(body, form, PairsStand::OnLines, name, reader, faults);
    });
    if (status != Status::Success) return status;
    if (body.rows == array.rows && body.cols == array.cols) return Status::Success;
    return AddFault(faults, reader,
                    Concat("array '", name, "' has no DATA after its ", body.rows, " rows and ",
                           body.cols, " columns"));
}

Status ReadArrayValues(ArrayRecord& array, std::string_view name, std::int32_t ports,
                       LineReader& reader, std::string& faults) {
    if (!reader.Next()) return TextEndedInside(name, reader, faults);
    const ValueForm form = FormOfKind(array.kind);
    const bool fits = array.rows == array.cols && ports > 0;
    ArrayBody body{array, array.rows, array.cols};
    Status status = ForEachBodyLine(name, reader, faults, [&](std::string_view word) {
        if (word != "DATA") return StoreArrayKeyword(body, word, reader, faults);
        const bool grows = fits && body.rows == ports && body.cols == ports;
        if (!grows && !HasShapeOf(body, array)) return RefuseShape(body, name, reader, faults);
        return ReadData(body, form, PairsStand::InRows, name, reader, faults);
    });
    if (status == Status::Success && !HasShapeOf(body, array)) {
        status = RefuseShape(body, name, reader, faults);
    }
    return status;
}

void WriteArrayBody(const ArrayRecord& array, std::string& out) {
    for (const ArrayKeyword& row : arrayKeywords) out += row.line(row.word, array);
    if (!array.data) return;
    out += "DATA \n";
    const std::int64_t count = std::int64_t{std::max(array.rows, 0)} * std::max(array.cols, 0);
    for (std::int64_t i = 0; i < count; ++i) out += Concat(Element(array, i), "\n");
}

}  // namespace photrak
