// Files and names; the format itself is in files/signal_file.h.
#include "models/signal_blocks.h"

#include "base/text.h"
#include "files/signal_file.h"
#include "kernel/parameters.h"
#include "kernel/result_names.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

std::string FileNameOf(const Component& component) {
    return std::string(GetParamText(component.parameters, "FileName", ""));
}

/// The fixed text says what failed; this line says where.
std::string Origin(const Component& component, std::string_view file, std::string_view reason) {
    return Concat("  component '", component.name, "', file '", file, "'", reason, "\n");
}

}  // namespace

Status SaveSigBlock(const SimOptions& options, const Component& component, const Nodelist* inputs,
                    std::string& errorText) {
    if (!inputs) {
        errorText += "Unable to save signals: no node selected.\n";
        return Status::Warning;
    }
    std::string root = FileNameOf(component);
    if (root.empty()) root = component.name;
    std::string text;
    for (const Nodelist& cell : Items(inputs)) {
        SigFileWriter(text, cell.sigType, cell.sig, options);
    }
    const std::string name = ResultStem(options, root) + ".sgd";
    if (WriteResultFile(name, text, errorText)) return Status::Success;
    errorText += "ERROR: Unable to save signals: could not create output file.\n";
    errorText += Origin(component, name, "");
    return Status::Error;
}

Status LoadSigBlock(const SimOptions& /*options*/, const Component& component, Nodelist* outputs,
                    std::string& errorText) {
    if (!outputs) {
        errorText += "Unable to load signals: no node selected.\n";
        return Status::Warning;
    }
    const std::string name = FileNameOf(component);
    if (name.empty()) {
        errorText += "Unable to load signals: no filename given.\n";
        return Status::Warning;
    }
    std::string text, reason;
    if (!ReadWholeFile(name, text, reason)) {
        errorText += "ERROR: Unable to load signals: could not open file.\n";
        errorText += Origin(component, name, ": " + reason);
        return Status::Error;
    }
    LineReader stream(text, name);
    for (Nodelist& cell : Items(outputs)) {
        const Status status = ReadSignalGroup(&stream, &cell.sigType, &cell.sig, errorText);
        if (status == Status::Success) continue;
        errorText += Origin(component, name, "");
        return status;
    }
    return Status::Success;
}

}  // namespace photrak
