// The writers. Trailing blanks after some of the keywords belong to the format.
#include "files/signal_file.h"

#include "base/text.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

constexpr int storedDigits = 15;

std::string Number(double value) {
    return FormatSignificant(value, storedDigits);
}

/// "KEYWORD VALUE" on a line of its own.
void AppendLine(std::string& text, std::string_view keyword, std::string_view value) {
    text.append(keyword).append(1, ' ').append(value).append(1, '\n');
}
void AppendLine(std::string& text, std::string_view keyword, double value) {
    AppendLine(text, keyword, Number(value));
}
void AppendLine(std::string& text, std::string_view keyword, std::int32_t value) {
    AppendLine(text, keyword, std::to_string(value));
}

void AppendDomain(std::string& text, std::int16_t domain) {
    AppendLine(text, "domain", domain == TimeDomain ? "TIMEDOMAIN" : "FREQDOMAIN");
}

/// "RE+IMj" or "RE-IMj".
void AppendComplex(std::string& text, Complex sample) {
    text += Number(sample.re);
    // An imaginary part of minus zero is stored as plain zero.
    const double im = sample.im == 0.0 ? 0.0 : sample.im;
    if (!(im < 0.0)) text += '+';
    text += Number(im);
    text += "j\n";
}

void AppendComplexBlock(std::string& text, std::string_view keyword, const Complex* samples,
                        std::int32_t n) {
    text.append(keyword).append(1, '\n');
    for (std::int32_t i = 1; i <= n; ++i) AppendComplex(text, samples[i]);
}

/// Real parts only.
void AppendRealBlock(std::string& text, std::string_view keyword, const Complex* samples,
                     std::int32_t n) {
    text.append(keyword).append(1, '\n');
    for (std::int32_t i = 1; i <= n; ++i) text.append(Number(samples[i].re)).append(1, '\n');
}

enum class Origin { Block, Record };

void AppendSpectrum(std::string& text, const OpSigASE& spectrum, Origin origin) {
    text += "OpSigASE \n";
    AppendLine(text, "fstart", spectrum.fstart);
    AppendLine(text, "fstep", spectrum.fstep);
    AppendLine(text, "noPoints", spectrum.noPoints);
    // By design: the form of stored records lacks this keyword, and so the reader passes
    // over its values.
    if (origin == Origin::Block) text += "powerSamples\n";
    for (std::int32_t i = 1; i <= spectrum.noPoints; ++i) {
        text.append(Number(spectrum.powerSamples[i])).append(1, '\n');
    }
    text += "ENDASE \n";
}

void AppendChannel(std::string& text, const OpSig& channel) {
    text += "OpSigType \n";
    AppendLine(text, "wavelength", channel.wavelength);
    AppendDomain(text, channel.domain);
    AppendLine(text, "bitRate", channel.bitRate);
    AppendLine(text, "noPoints", channel.noPoints);
    AppendLine(text, "patternLength", channel.patternLength);
    AppendLine(text, "tStep", channel.tStep);
    AppendLine(text, "startTime", channel.startTime);
    AppendLine(text, "RIN", channel.RIN);
    AppendComplexBlock(text, "Ex_samples", channel.Ex_samples, channel.noPoints);
    if (channel.Ey_samples) {
        AppendComplexBlock(text, "Ey_samples", channel.Ey_samples, channel.noPoints);
    }
    text += "ENDOpSig\n";
}

void AppendOptical(std::string& text, const OpSignal& signal, Origin origin) {
    for (const OpSigASE& spectrum : Items(signal.noise)) AppendSpectrum(text, spectrum, origin);
    for (const OpSig& channel : Items(signal.channels)) AppendChannel(text, channel);
}

void AppendElectrical(std::string& text, const ElecSig& wave) {
    const bool voltage = wave.UnitType == VoltageUnit, current = wave.UnitType == CurrentUnit;
    text += "ElecSigType \n";
    AppendLine(text, "UnitType", voltage ? "VOLTAGE" : current ? "CURRENT" : "UNKNOWN");
    AppendDomain(text, wave.domain);
    AppendLine(text, "bitRate", wave.bitRate);
    AppendLine(text, "patternLength", wave.patternLength);
    AppendLine(text, "tStep", wave.tStep);
    AppendLine(text, "startTime", wave.startTime);
    AppendLine(text, "noPoints", wave.noPoints);
    // By design: imaginary parts are not stored, so that a spectrum does not come back
    // whole.
    AppendRealBlock(text, "elecSamples ", wave.elecSamples, wave.noPoints);
    AppendRealBlock(text, "sigmaSamples", wave.sigmaSamples, wave.noPoints);
}

void AppendBinary(std::string& text, const BinSig& bits) {
    text += "BinSigType \n";
    AppendLine(text, "bitRate", bits.bitRate);
    AppendLine(text, "startTime", bits.startTime);
    AppendLine(text, "noPoints", bits.noPoints);
    text += "bitSequence \n";
    for (std::int32_t i = 1; i <= bits.noPoints; ++i) {
        AppendPiece(text, bits.bitSequence[i]);
        text += '\n';
    }
}

bool IsStorable(std::int32_t sigType, const void* sig) {
    return sig && (sigType == OpSigType || sigType == ElecSigType || sigType == BinSigType);
}

void AppendBody(std::string& text, std::int32_t sigType, const void* sig, Origin origin) {
    if (sigType == OpSigType) AppendOptical(text, *static_cast<const OpSignal*>(sig), origin);
    if (sigType == ElecSigType) AppendElectrical(text, *static_cast<const ElecSig*>(sig));
    if (sigType == BinSigType) AppendBinary(text, *static_cast<const BinSig*>(sig));
    text += "ENDSIG\n";
}

}  // namespace

void SigFileWriter(std::string& text, std::int32_t sigType, const void* sig,
                   const SimOptions& options) {
    if (!IsStorable(sigType, sig)) return;
    text += "BEGINSIG\n";
    AppendLine(text, "SET", options.set);
    AppendLine(text, "INNERSWEEP", options.innerIndex);
    AppendLine(text, "OUTERSWEEP", options.outerIndex);
    AppendLine(text, "STATRUN", options.runIndex);
    AppendLine(text, "LOOP", options.loopIndex);
    AppendBody(text, sigType, sig, Origin::Block);
}

void SigRecordWriter(std::string& text, const SigRecord& record, std::int32_t nodeNumber) {
    if (!IsStorable(record.sigType, record.sig)) return;
    text += "BEGINSIG\n";
    AppendLine(text, "NAME", record.NAME);
    AppendLine(text, "NODE", nodeNumber);
    AppendLine(text, "SET", record.SET);
    AppendLine(text, "INNERSWEEP", record.INNERSWEEP);
    AppendLine(text, "OUTERSWEEP", record.OUTERSWEEP);
    AppendLine(text, "RUN", record.RUN);
    AppendLine(text, "LOOP", record.LOOP);
    AppendLine(text, "BIN", record.BIN);
    AppendBody(text, record.sigType, record.sig, Origin::Record);
}

Status SaveAllSignals(const Workspace* workspace, const std::string& fileName,
                      std::string& errorText) {
    if (!workspace) {
        errorText += "Unable to save signals: no workspace selected.\n";
        return Status::Warning;
    }
    if (fileName.empty()) {
        errorText += "Unable to save signals: no filename given.\n";
        return Status::Warning;
    }
    std::string text;
    for (const auto& [number, node] : workspace->nodes) {
        for (const SigRecord& record : Items(node->signals)) SigRecordWriter(text, record, number);
    }
    if (WriteWholeFile(fileName, text)) return Status::Success;
    errorText += "ERROR: Unable to save signals: could not create output file.\n";
    return Status::Error;
}

}  // namespace photrak
