// Files and names; the format itself is in files/signal_file.h.
#include "models/signal_blocks.h"

#include "files/signal_file.h"
#include "kernel/result_names.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

struct SignalBlockParams {
    std::string FileName;
};
constexpr ParamRow<SignalBlockParams> rows[] = {{"FileName", &SignalBlockParams::FileName, ""}};

std::string FileNameOf(const ModelCall& call) {
    SignalBlockParams params;
    ReadParams(rows, call.component.parameters, params);
    return params.FileName;
}

/// The documented text says what failed; this line says where.
std::string Origin(const ModelCall& call, std::string_view file, std::string_view reason) {
    return Concat("  component '", call.owner, "', file '", file, "'", reason, "\n");
}

}  // namespace

std::vector<ParamSpec> SignalBlockParamSpecs() {
    return SpecsOf(rows);
}

Status SaveSigBlock(const ModelCall& call) {
    if (!call.inputs) return call.Warn("Unable to save signals: no node selected.\n");
    const std::string fileName = FileNameOf(call);
    std::string text;
    for (const Nodelist& cell : Items(call.inputs)) {
        SigFileWriter(text, cell.sigType, cell.sig, call.options);
    }
    const std::string name =
        ResultStem(call.options, fileName.empty() ? call.owner : fileName) + ".sgd";
    if (WriteResultFile(name, text, call.errorText)) return Status::Success;
    return call.Fail("ERROR: Unable to save signals: could not create output file.\n",
                     Origin(call, name, ""));
}

Status LoadSigBlock(const ModelCall& call) {
    if (!call.outputs) return call.Warn("Unable to load signals: no node selected.\n");
    const std::string name = FileNameOf(call);
    if (name.empty()) return call.Warn("Unable to load signals: no filename given.\n");
    std::string text, reason;
    if (!ReadWholeFile(name, text, reason)) {
        return call.Fail("ERROR: Unable to load signals: could not open file.\n",
                         Origin(call, name, ": " + reason));
    }
    LineReader stream(text, name, SpentText(text));
    for (Nodelist& cell : Items(call.outputs)) {
        const Status status = ReadSignalGroup(&stream, &cell.sigType, &cell.sig, call.errorText);
        if (status == Status::Success) continue;
        call.errorText += Origin(call, name, "");
        return status;
    }
    return Status::Success;
}

}  // namespace photrak
