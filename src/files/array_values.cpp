// One table of keywords serves both readers of array parameters. They differ in who decides the
// number of elements: ROWS and COLS of the text in a definition, the record in a saved block.
#include "files/array_values.h"

#include <algorithm>
#include <limits>

#include "files/param_values.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

struct ArrayBody {
    ArrayRecord& array;
    std::int32_t rows = 0, cols = 0;  // as the text tells them
};

template <auto Member>
bool StoreCount(ArrayBody& body, LineReader& reader) {
    body.*Member = ReadInt(reader.Word());
    return true;
}
template <auto Member>
bool StoreStep(ArrayBody& body, LineReader& reader) {
    body.array.*Member = ReadDouble(reader.Word());
    return true;
}
template <auto Member>
bool StoreTitle(ArrayBody& body, LineReader& reader) {
    return SetText(&(body.array.*Member), reader.Text());
}

constexpr struct {
    std::string_view word;
    bool (*store)(ArrayBody& body, LineReader& reader);
} arrayKeywords[] = {
    {"ROWS", StoreCount<&ArrayBody::rows>},
    {"COLS", StoreCount<&ArrayBody::cols>},
    {"ROWSTEP", StoreStep<&ArrayRecord::rowStep>},
    {"COLSTEP", StoreStep<&ArrayRecord::colStep>},
    {"ROWSTEPTITLE", StoreTitle<&ArrayRecord::rowStepTitle>},
    {"COLSTEPTITLE", StoreTitle<&ArrayRecord::colStepTitle>},
    {"ROWSTEPUNITS", StoreTitle<&ArrayRecord::rowStepUnits>},
    {"COLSTEPUNITS", StoreTitle<&ArrayRecord::colStepUnits>},
    {"XUNITS", StoreTitle<&ArrayRecord::xUnits>},
    {"YUNITS", StoreTitle<&ArrayRecord::yUnits>},
};

constexpr std::size_t ElementBytes(ElementForm form) {
    switch (form) {
        case ElementForm::Double:
            return sizeof(double);
        case ElementForm::Int32:
            return sizeof(std::int32_t);
        case ElementForm::Int16:
            return sizeof(std::int16_t);
        default:
            return sizeof(Complex);
    }
}

/// The real part and, straight behind it or as the next word, the imaginary part.
Complex ReadPair(std::string_view word, LineReader& reader) {
    std::size_t used = 0;
    const double re = ReadDouble(word, &used);
    const std::string_view behind = word.substr(used);
    return {re, ReadDouble(behind.empty() ? reader.Word() : behind)};
}

void StoreElement(void* data, std::int64_t index, ElementForm form, std::string_view word,
                  LineReader& reader) {
    switch (form) {
        case ElementForm::Double:
            static_cast<double*>(data)[index] = ReadDouble(word);
            return;
        case ElementForm::Int32:
            static_cast<std::int32_t*>(data)[index] = ReadInt(word);
            return;
        case ElementForm::Int16: {
            using Limits = std::numeric_limits<std::int16_t>;
            const std::int32_t value =
                std::clamp<std::int32_t>(ReadInt(word), Limits::min(), Limits::max());
            static_cast<std::int16_t*>(data)[index] = static_cast<std::int16_t>(value);
            return;
        }
        case ElementForm::ComplexPairs:
            static_cast<Complex*>(data)[index] = ReadPair(word, reader);
            return;
        case ElementForm::ComplexLines:
            static_cast<Complex*>(data)[index] = {ReadDouble(word), ReadDouble(reader.Word())};
            return;
    }
}

/// Fills `count` elements from the lines that follow; false if "ENDPARAM" or the end of the text
/// comes first: what follows the block then still reads as what it is.
bool ReadElements(void* data, std::int64_t count, ElementForm form, LineReader& reader) {
    std::int64_t done = 0;
    while (done < count) {
        if (!reader.Next()) return false;
        std::string_view word = reader.Word();
        if (word == "ENDPARAM") return false;
        do {
            if (!word.empty()) StoreElement(data, done++, form, word, reader);
            word = form == ElementForm::ComplexLines ? std::string_view() : reader.Word();
        } while (done < count && !word.empty());
    }
    return true;
}

/// Reads the elements behind DATA into fresh memory, which replaces the array only when it is full.
Status ReadData(ArrayRecord& array, std::int32_t rows, std::int32_t cols, ElementForm form,
                std::string_view name, LineReader& reader, std::string& faults) {
    const auto fail = [&](std::string_view what) {
        return AddFault(
            faults, reader,
            Concat("array ", name, ": DATA of ", rows, " rows and ", cols, " columns ", what));
    };
    const std::int64_t count = std::int64_t{rows} * cols;
    // An element takes at least a digit and a separator; the last may end the text.
    const bool holds =
        rows >= 0 && cols >= 0 && static_cast<std::uint64_t>(count) <= reader.BytesLeft() / 2 + 1;
    if (!holds) return fail("is more than the text holds");
    OwnedBlock<void> data;
    if (count > 0) {
        data.reset(AllocateZeroed(static_cast<std::size_t>(count), ElementBytes(form)));
        if (!data) return fail("does not fit into memory");
    }
    if (!ReadElements(data.get(), count, form, reader)) return fail("has too few elements");
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
        if (!row.store(body, reader)) return MemoryRanOut(word, reader, faults);
    }
    return Status::Success;
}

}  // namespace

bool GiveArray(Parameter& parameter) {
    auto* array = static_cast<ArrayRecord*>(AllocateZeroed(1, sizeof(ArrayRecord)));
    parameter.valactual = array;
    if (!array) return false;
    array->kind = parameter.type - DoubleArrayType;
    for (char** text : {&array->rowStepTitle, &array->colStepTitle, &array->rowStepUnits,
                        &array->colStepUnits, &array->xUnits, &array->yUnits}) {
        if (!SetText(text, "")) return false;
    }
    return true;
}

Status ReadArrayDefinition(ArrayRecord& array, ElementForm form, std::string_view name,
                           LineReader& reader, std::string& faults) {
    ArrayBody body{array};
    const Status status = ForEachBodyLine(name, reader, faults, [&](std::string_view word) {
        if (word != "DATA") return StoreArrayKeyword(body, word, reader, faults);
        return ReadData(array, body.rows, body.cols, form, name, reader, faults);
    });
    if (status != Status::Success) return status;
    if (body.rows == array.rows && body.cols == array.cols) return Status::Success;
    return AddFault(faults, reader,
                    Concat("array '", name, "' has no DATA behind its ", body.rows, " rows and ",
                           body.cols, " columns"));
}

Status ReadArrayValues(ArrayRecord& array, LineReader& reader, std::string& faults) {
    constexpr ElementForm formOfKind[] = {ElementForm::Double, ElementForm::Int32,
                                          ElementForm::Int16, ElementForm::ComplexPairs};
    const ElementForm form = formOfKind[std::clamp(array.kind, 0, 3)];
    if (!reader.Next()) return TextEndedInside("array", reader, faults);
    ArrayBody body{array};  // ROWS and COLS of the text change nothing: the record decides
    return ForEachBodyLine("array", reader, faults, [&](std::string_view word) {
        if (word != "DATA") return StoreArrayKeyword(body, word, reader, faults);
        return ReadData(array, array.rows, array.cols, form, "values", reader, faults);
    });
}

}  // namespace photrak
