// The catalogue in words, for a user who sets a block in a topology file by hand.
#include "files/catalogue_listing.h"

#include <algorithm>

#include "base/text.h"
#include "files/catalogue.h"
#include "files/param_save.h"
#include "files/topology_words.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

constexpr struct {
    std::int32_t code;
    std::string_view words;
} portWords[] = {
    {OpSigType, "optical"},
    {ElecSigType, "electrical"},
    {OpOrElecSigType, "optical or electrical"},
    {BinSigType, "binary"},
    {UnknownSigType, "any signal"},
    {NoSigType, "none"},
    {EtcSigType, "as many as wanted"},
    {RepeatTwo, "the last two again"},
    {RepeatThree, "the last three again"},
    {RepeatFour, "the last four again"},
};

std::string_view WordsForPort(std::int32_t code) {
    for (const auto& row : portWords) {
        if (row.code == code) return row.words;
    }
    return "unknown";
}

std::string_view TextOf(const char* text) {
    return text ? text : "";
}

std::string DescribePorts(std::string_view title, const std::vector<Port>& ports,
                          std::int32_t least, std::int32_t most, std::int32_t placed) {
    std::string line = Concat("  ", title);
    // A source or sink stands on the ground node with a port that carries nothing.
    if (most == 0 || (ports.size() == 1 && ports[0].sigType == NoSigType)) return line + "none\n";
    line +=
        least == most ? Concat(most) : Concat(least, " to ", most, ", ", placed, " when placed");
    std::string_view separator = ": ";
    for (const Port& port : ports) {
        line += Concat(separator, WordsForPort(port.sigType));
        separator = ", ";
    }
    return line + (ports.empty() ? ": any signal\n" : "\n");
}

std::string LimitText(double limit) {
    return FormatDefault(limit);
}
std::string LimitText(std::int32_t limit) {
    return Concat(limit);
}
std::string LimitText(signed char limit) {
    return std::string(1, static_cast<char>(limit));
}
/// Of a complex number its real part.
std::string LimitText(const Complex& limit) {
    return FormatDefault(limit.re);
}

std::string LimitText(const Parameter& parameter, const void* limit) {
    if (!limit || TypeOf(parameter.type).limits == Limits::None) return {};
    return WithForm(TypeOf(parameter.type).form, [&]<class T>(std::type_identity<T>) {
        if constexpr (std::is_void_v<T>)
            return std::string();
        else
            return LimitText(*static_cast<const T*>(limit));
    });
}

/// Limits and units, or the words of a choice, or the shape of an array.
std::string RangeText(const Parameter& parameter) {
    const std::string_view units = TextOf(parameter.UNITS);
    if (parameter.type == EnumType) return Concat("one of ", units);
    if (IsArrayType(parameter.type) && parameter.valactual) {
        const auto& array = *static_cast<const ArrayRecord*>(parameter.valactual);
        return Concat(array.rows, " x ", array.cols);
    }
    const std::string low = LimitText(parameter, parameter.min);
    if (low.empty()) return {};
    return Concat(low, " to ", LimitText(parameter, parameter.max), units.empty() ? "" : " ",
                  units);
}

constexpr std::size_t columnCount = 4;  // name, type, default, range

struct Row {
    std::string cells[columnCount];
    std::string_view description;
};

std::string DescribeParameters(const Parameter* list) {
    std::vector<Row> rows;
    std::size_t widths[columnCount] = {};
    for (const Parameter& parameter : Items(list)) {
        const std::string_view value = TextOf(parameter.value);
        Row row{{std::string(TextOf(parameter.name)), std::string(TypeOf(parameter.type).listing),
                 value.empty() ? std::string("(empty)") : std::string(value), RangeText(parameter)},
                TextOf(parameter.DESC)};
        for (std::size_t i = 0; i < columnCount; ++i) {
            widths[i] = std::max(widths[i], row.cells[i].size());
        }
        rows.push_back(std::move(row));
    }
    std::string text;
    for (const Row& row : rows) {
        std::string line = " ";
        for (std::size_t i = 0; i < columnCount; ++i) {
            line +=
                Concat(" ", row.cells[i], std::string(widths[i] - row.cells[i].size() + 1, ' '));
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += Concat(line, "\n");
        if (!row.description.empty()) text += Concat("      ", row.description, "\n");
    }
    return text;
}

bool Holds(const std::vector<const Component*>& category, const Component* model) {
    return std::find(category.begin(), category.end(), model) != category.end();
}

std::string ListCategory(std::string_view title, const std::vector<const Component*>& models) {
    if (models.empty()) return {};
    std::size_t width = 0;
    for (const Component* model : models) width = std::max(width, model->name.size());
    std::string text = Concat(title, "\n");
    for (const Component* model : models) {
        text += Concat("  ", model->name, std::string(width - model->name.size() + 2, ' '),
                       model->NOTE, "\n");
    }
    return text + "\n";
}

}  // namespace

std::string DescribeModel(const Component& prototype) {
    std::string text = Concat(prototype.name, "\n");
    if (!prototype.NOTE.empty()) text += Concat("  ", prototype.NOTE, "\n");
    text += "\nPorts\n";
    text += DescribePorts("inputs:  ", prototype.inputs, prototype.MININPUTS, prototype.MAXINPUTS,
                          prototype.NUMINPUTS);
    text += DescribePorts("outputs: ", prototype.outputs, prototype.MINOUTPUTS,
                          prototype.MAXOUTPUTS, prototype.NUMOUTPUTS);
    if (prototype.NUMINEQNUMOUTNODES) text += "  as many outputs as inputs\n";
    if (!prototype.parameters) return text + "\nNo parameters\n";
    return Concat(text, "\nParameters (name, type, default, limits and units or words)\n",
                  DescribeParameters(prototype.parameters));
}

std::string ListModels(const Catalogue& catalogue) {
    std::vector<const Component*> others;
    for (const auto& model : catalogue.models) {
        const bool listed =
            Holds(catalogue.transmitters, model.get()) || Holds(catalogue.channels, model.get()) ||
            Holds(catalogue.controls, model.get()) || Holds(catalogue.receivers, model.get());
        if (!listed) others.push_back(model.get());
    }
    std::string text = Concat(ListCategory("Transmitters", catalogue.transmitters),
                              ListCategory("Channel", catalogue.channels),
                              ListCategory("Control and hierarchy", catalogue.controls),
                              ListCategory("Receivers and plots", catalogue.receivers),
                              ListCategory("User models", others));
    if (!text.empty()) text.pop_back();
    return text;
}

std::string BlockOf(const Component& prototype) {
    const auto nodes = [](std::int32_t ports) {
        std::string text;
        for (std::int32_t i = 0; i < ports; ++i) text += " 0";
        return text;
    };
    const std::string icon = prototype.ICON.substr(0, prototype.ICON.find('.'));
    std::string text = Concat(
        "COMPONENT ", CleanName(prototype.type), "1 ", prototype.type, "\nNOTE ",
        CleanLine(prototype.NOTE), "\nICON ", icon.empty() ? "block" : icon, " 45 45\nNUMINPUTS ",
        prototype.NUMINPUTS, "\nNUMOUTPUTS ", prototype.NUMOUTPUTS, "\nINPUTFROM",
        nodes(prototype.NUMINPUTS), "\nOUTPUTTO", nodes(prototype.NUMOUTPUTS), "\n");
    for (const Parameter& parameter : Items(prototype.parameters)) {
        text += "\n";
        WriteParamBlock(parameter, text);
    }
    return text + "\nENDCOMPONENT\n";
}

}  // namespace photrak
