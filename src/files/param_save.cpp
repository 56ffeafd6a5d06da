// PARAM blocks as the reader of parameter values takes them.
#include "files/param_save.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "files/topology_words.h"

namespace photrak {

namespace {

std::string Line(std::string_view keyword, const char* text) {
    return Concat(keyword, " ", CleanLine(text ? text : ""), "\n");
}

std::string DistributionLine(std::string_view keyword, std::int32_t code) {
    return Concat(keyword, " ", WordOf(distributionWords, code, "NoProbDist"), "\n");
}

/// What a scalar parameter saves beside its VALUE.
struct ScalarForm {
    std::int32_t type;
    bool deviation, imaginaryDeviation;
    std::string_view unitsKeyword;  // empty: not written
};
constexpr ScalarForm scalarForms[] = {
    {DoubleType, true, false, "UNITS"}, {IntType, false, false, "UNITS"},
    {ComplexType, true, true, "UNITS"}, {CharType, false, false, ""},
    {StringType, false, false, ""},     {EnumType, false, false, "FIELD"},
};

void WriteScalar(const Parameter& p, std::string& out) {
    const auto form = std::ranges::find(scalarForms, p.type, &ScalarForm::type);
    out += Line("VALUE", p.value);
    if (form->deviation) {
        out += Line("STDDEV", p.STDDEV);
        out += DistributionLine("PROBDIST", p.PROBDIST);
    }
    if (form->imaginaryDeviation) {
        out += Line("ISTDDEV", p.ISTDDEV);
        out += DistributionLine("IPROBDIST", p.IPROBDIST);
    }
    if (!form->unitsKeyword.empty()) out += Line(form->unitsKeyword, p.UNITS);
}

/// A number that reads back: an infinity is written as one that overflows.
std::string Number(double value) {
    if (std::isinf(value)) return value > 0 ? "1e999" : "-1e999";
    return FormatDefault(value);
}

std::string Element(const ArrayRecord& array, std::int64_t i) {
    switch (array.kind) {
        case 0:
            return Number(static_cast<const double*>(array.data)[i]);
        case 1:
            return Concat(static_cast<const std::int32_t*>(array.data)[i]);
        case 2:
            return Concat(static_cast<const std::int16_t*>(array.data)[i]);
        default: {
            // By design: nothing separates the two numbers of a complex element, which is the
            // form of the file, although only a signed imaginary part reads back as it was.
            const Complex& z = static_cast<const Complex*>(array.data)[i];
            return Number(z.re) + Number(z.im);
        }
    }
}

void WriteArray(const ArrayRecord& array, std::string& out) {
    out += Concat("ROWS ", array.rows, "\nCOLS ", array.cols, "\n");
    out += Concat("ROWSTEP ", Number(array.rowStep), "\nCOLSTEP ", Number(array.colStep), "\n");
    out += Line("ROWSTEPTITLE", array.rowStepTitle);
    out += Line("COLSTEPTITLE", array.colStepTitle);
    out += Line("ROWSTEPUNITS", array.rowStepUnits);
    out += Line("COLSTEPUNITS", array.colStepUnits);
    out += Line("XUNITS", array.xUnits);
    out += Line("YUNITS", array.yUnits);
    if (!array.data) return;
    out += "DATA \n";
    const std::int64_t count = std::int64_t{std::max(array.rows, 0)} * std::max(array.cols, 0);
    for (std::int64_t i = 0; i < count; ++i) {
        out += Element(array, i);
        out += '\n';
    }
}

}  // namespace

void WriteParamBlock(const Parameter& parameter, std::string& out) {
    const std::string_view scalar = WordOf(variableTypeWords, parameter.type, "");
    const std::string_view array = WordOf(arrayTypeWords, parameter.type, "");
    if (scalar.empty() && (array.empty() || !parameter.valactual)) return;
    out +=
        Concat("PARAM ", CleanWord(parameter.name ? parameter.name : ""), " ", scalar, array, "\n");
    if (array.empty()) {
        WriteScalar(parameter, out);
    } else {
        WriteArray(*static_cast<const ArrayRecord*>(parameter.valactual), out);
    }
    out += "ENDPARAM\n";
}

}  // namespace photrak
