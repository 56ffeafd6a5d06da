// The reader of a group: a table of keywords for each body. It trusts no count and no line of the
// text; what a file cannot back with lines is refused before anything of that size is allocated.
#include "files/signal_file_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "base/text.h"
#include "files/signal_file.h"
#include "kernel/sample_arrays.h"

namespace photrak {
namespace {

/// The lines of one group, and the first thing that went wrong with them.
class Source {
  public:
    Source(LineReader& lines, std::string& errorText)
        : lines_(lines),
          errorText_(errorText),
          samplesLeft_(lines.BytesLeft() / bytesPerSample + 1) {}

    bool Failed() const { return failed_; }
    /// Moves on to the next line of a body; false at a failure, of which the text's end is one.
    bool NextOfBody() {
        if (failed_) return false;
        if (lines_.Next()) return true;
        Fail("the file ends inside a signal");
        return false;
    }
    bool Next() { return !failed_ && lines_.Next(); }
    std::string_view Word() { return lines_.Word(); }

    void Fail(std::string_view what) {
        if (failed_) return;
        failed_ = true;
        errorText_ += Concat("ERROR: signal file '", lines_.Name(), "', line ", lines_.LineNumber(),
                             ": ", what, "\n");
    }
    void Require(bool allocated) {
        if (!allocated) Fail("insufficient memory for the signal");
    }

    /// The value after the keyword; 0 if there is none.
    double Double() {
        const double value = Number(ReadDouble);
        if (!std::isfinite(value)) Fail("the value is beyond the range of numbers");
        return value;
    }
    std::int32_t Int() { return Number(ReadInt); }
    /// A number of samples. All counts of a group share what its text can hold, repeated ones too.
    std::int32_t Count() {
        const std::int32_t count = Int();
        if (count < 0 || static_cast<std::size_t>(count) > samplesLeft_) {
            Fail(Concat("noPoints is ", count, ", which the file cannot hold"));
            return 0;
        }
        samplesLeft_ -= static_cast<std::size_t>(count);
        return count;
    }

    /// Calls store(i, line) for the next n lines, i = 1..n; it tells whether the line is a value.
    template <class Store>
    void Values(std::int32_t n, Store store) {
        for (std::int32_t i = 1; i <= n && NextOfBody(); ++i) {
            if (!store(i, lines_.Line())) Fail(Concat("value ", i, " of ", n, " is no number"));
            lines_.ForgetRead();
        }
    }

  private:
    /// What follows the keyword, "inf" and "nan" being no numbers; nothing at all is 0.
    template <class Value>
    Value Number(Value (*read)(std::string_view, std::size_t*)) {
        const std::string_view rest = lines_.Rest();
        std::size_t used = 0;
        const Value value = read(rest, &used);
        const bool isBlank = rest.find_first_not_of(" \t\r") == std::string_view::npos;
        if (used == 0 && !isBlank) Fail("the value is no number");
        return value;
    }

    // The shortest line of a value is a digit and a new line, which the last line may lack.
    static constexpr std::size_t bytesPerSample = 2;

    LineReader& lines_;
    std::string& errorText_;
    std::size_t samplesLeft_;
    bool failed_ = false;
};

bool ParseReal(std::string_view line, double& value) {
    std::size_t used = 0;
    value = ReadDouble(line, &used);
    return used > 0 && std::isfinite(value);
}

/// The imaginary part starts where the real part ends, after a plus sign of its own if it has a
/// minus sign as well. What follows it does not count.
bool ParseComplex(std::string_view line, Complex& value) {
    std::size_t used = 0;
    value.re = ReadDouble(line, &used);
    std::string_view rest = line.substr(used);
    if (rest.starts_with("+-")) rest.remove_prefix(1);
    value.im = ReadDouble(rest);
    return used > 0 && std::isfinite(value.re) && std::isfinite(value.im);
}

bool ParseBit(std::string_view line, std::int16_t& value) {
    using Limits = std::numeric_limits<std::int16_t>;
    std::size_t used = 0;
    const std::int32_t bit = ReadInt(line, &used);
    value = static_cast<std::int16_t>(std::clamp<std::int32_t>(bit, Limits::min(), Limits::max()));
    return used > 0;
}

void ReadComplexBlock(Source& source, Complex* samples, std::int32_t n) {
    source.Values(
        n, [=](std::int32_t i, std::string_view line) { return ParseComplex(line, samples[i]); });
}

void ReadRealBlock(Source& source, Complex* samples, std::int32_t n) {
    source.Values(
        n, [=](std::int32_t i, std::string_view line) { return ParseReal(line, samples[i].re); });
}

template <class Record>
struct Keyword {
    std::string_view word;
    void (*read)(Source& source, Record& record);
};

/// Lines up to the one with the word `end`; unknown ones are passed over.
template <class Record>
void ReadBody(Source& source, std::span<const Keyword<Record>> keywords, std::string_view end,
              Record& record) {
    while (source.NextOfBody()) {
        const std::string_view word = source.Word();
        if (word == end) return;
        for (const Keyword<Record>& keyword : keywords) {
            if (keyword.word != word) continue;
            keyword.read(source, record);
            break;
        }
    }
}

void Read(Source& source, double& value) {
    value = source.Double();
}
void Read(Source& source, std::int32_t& value) {
    value = source.Int();
}

template <auto member, class Record>
void ReadMember(Source& source, Record& record) {
    Read(source, record.*member);
}

/// A word that is neither leaves the domain alone.
template <class Record>
void ReadDomain(Source& source, Record& record) {
    const std::string_view word = source.Word();
    if (word == "TIMEDOMAIN") record.domain = TimeDomain;
    if (word == "FREQDOMAIN") record.domain = FreqDomain;
}

/// The count counts when the values come: the points of a spectrum without values are none.
struct SpectrumBody {
    OpSigASE& spectrum;
    std::int32_t noPoints = 0;
};

void ReadPowerSamples(Source& source, SpectrumBody& body) {
    OpSigASE& spectrum = body.spectrum;
    OwnedBlock<double> samples(NewSamples<double>(body.noPoints));
    source.Require(samples != nullptr);
    if (!samples) return;
    Release(spectrum.powerSamples);
    spectrum.powerSamples = samples.release();
    spectrum.noPoints = body.noPoints;
    source.Values(body.noPoints, [&](std::int32_t i, std::string_view line) {
        return ParseReal(line, spectrum.powerSamples[i]);
    });
}

constexpr Keyword<SpectrumBody> spectrumKeywords[] = {
    {"noPoints", [](Source& source, SpectrumBody& body) { body.noPoints = source.Count(); }},
    {"fstart", [](Source& source, SpectrumBody& body) { body.spectrum.fstart = source.Double(); }},
    {"fstep", [](Source& source, SpectrumBody& body) { body.spectrum.fstep = source.Double(); }},
    {"powerSamples", ReadPowerSamples},
};

void ReadExSamples(Source& source, OpSig& channel) {
    ReadComplexBlock(source, channel.Ex_samples, channel.noPoints);
}

void ReadEySamples(Source& source, OpSig& channel) {
    source.Require(AddEySamples(&channel) == 0);
    if (!source.Failed()) ReadComplexBlock(source, channel.Ey_samples, channel.noPoints);
}

constexpr Keyword<OpSig> channelKeywords[] = {
    {"wavelength", ReadMember<&OpSig::wavelength, OpSig>},
    {"domain", ReadDomain<OpSig>},
    {"bitRate", ReadMember<&OpSig::bitRate, OpSig>},
    {"noPoints",
     [](Source& source, OpSig& channel) {
         source.Require(ResizeOpSig(&channel, source.Count()) == 0);
     }},
    {"patternLength", ReadMember<&OpSig::patternLength, OpSig>},
    {"tStep", ReadMember<&OpSig::tStep, OpSig>},
    {"startTime", ReadMember<&OpSig::startTime, OpSig>},
    {"RIN", ReadMember<&OpSig::RIN, OpSig>},
    {"Ex_samples", ReadExSamples},
    {"Ey_samples", ReadEySamples},
};

// By design: "UNKNOWN" is none of the words, and leaves the unit as the record was made.
void ReadUnitType(Source& source, ElecSig& wave) {
    const std::string_view word = source.Word();
    if (word == "VOLTAGE") wave.UnitType = VoltageUnit;
    if (word == "CURRENT") wave.UnitType = CurrentUnit;
}

constexpr Keyword<ElecSig> waveKeywords[] = {
    {"UnitType", ReadUnitType},
    {"domain", ReadDomain<ElecSig>},
    {"bitRate", ReadMember<&ElecSig::bitRate, ElecSig>},
    {"patternLength", ReadMember<&ElecSig::patternLength, ElecSig>},
    {"tStep", ReadMember<&ElecSig::tStep, ElecSig>},
    {"startTime", ReadMember<&ElecSig::startTime, ElecSig>},
    {"noPoints", [](Source& source,
                    ElecSig& wave) { source.Require(ResizeElecSig(&wave, source.Count()) == 0); }},
    {"elecSamples",
     [](Source& source, ElecSig& wave) { ReadRealBlock(source, wave.elecSamples, wave.noPoints); }},
    {"sigmaSamples",
     [](Source& source, ElecSig& wave) {
         ReadRealBlock(source, wave.sigmaSamples, wave.noPoints);
     }},
};

/// The bits of a count without bits are 0.
void ReadBitCount(Source& source, BinSig& bits) {
    const std::int32_t count = source.Count();
    OwnedBlock<std::int16_t> sequence(NewSamples<std::int16_t>(count));
    source.Require(sequence != nullptr);
    if (!sequence) return;
    Release(bits.bitSequence);
    bits.bitSequence = sequence.release();
    bits.noPoints = count;
}

constexpr Keyword<BinSig> bitKeywords[] = {
    {"bitRate", ReadMember<&BinSig::bitRate, BinSig>},
    {"startTime", ReadMember<&BinSig::startTime, BinSig>},
    {"noPoints", ReadBitCount},
    {"bitSequence",
     [](Source& source, BinSig& bits) {
         source.Values(bits.noPoints, [&](std::int32_t i, std::string_view line) {
             return ParseBit(line, bits.bitSequence[i]);
         });
     }},
};

/// A group grows here and is handed over whole or as far as it came.
class Group {
  public:
    explicit Group(Source& source) : source_(source) {}

    void Read() {
        bool begun = false;
        while (!source_.Failed()) {
            if (!source_.Next()) {
                if (begun) source_.Fail("the file ends inside a signal");
                return;
            }
            begun = true;
            const std::string_view word = source_.Word();
            if (word == "ENDSIG") return;
            if (word == "OpSigASE") AddSpectrum();
            if (word == "OpSigType") AddChannel();
            // The end of these bodies is the end of the group.
            if (word == "ElecSigType") return ReadWave();
            if (word == "BinSigType") return ReadBits();
        }
    }

    void HandOver(std::int32_t& type, void*& data) {
        const auto give = [&](std::int32_t sigType, void* sig) {
            if (!sig) return;
            type = sigType;
            data = sig;
        };
        give(OpSigType, optical_.release());
        give(ElecSigType, wave_.release());
        give(BinSigType, bits_.release());
    }

  private:
    bool MakeOptical() {
        if (!optical_) source_.Require(Make(optical_, CreateOpSignal) == 0);
        return !source_.Failed();
    }

    void AddSpectrum() {
        if (!MakeOptical()) return;
        OpSigASE* spectrum = nullptr;
        source_.Require(CreateOpSigASE(&spectrum, 0) == 0);
        if (source_.Failed()) return;
        (lastSpectrum_ ? lastSpectrum_->next : optical_->noise) = spectrum;
        lastSpectrum_ = spectrum;
        SpectrumBody body{*spectrum};
        ReadBody<SpectrumBody>(source_, spectrumKeywords, "ENDASE", body);
    }

    void AddChannel() {
        if (!MakeOptical()) return;
        OpSig* channel = nullptr;
        source_.Require(CreateOpSig(&channel, 0) == 0);
        if (source_.Failed()) return;
        channel->prev = lastChannel_;
        (lastChannel_ ? lastChannel_->next : optical_->channels) = channel;
        lastChannel_ = channel;
        ReadBody<OpSig>(source_, channelKeywords, "ENDOpSig", *channel);
    }

    void ReadWave() {
        if (!IsFirstBody()) return;
        source_.Require(Make(wave_, CreateElecSig, 0) == 0);
        if (wave_) ReadBody<ElecSig>(source_, waveKeywords, "ENDSIG", *wave_);
    }

    void ReadBits() {
        if (!IsFirstBody()) return;
        source_.Require(Make(bits_, CreateBinSig, 0) == 0);
        if (bits_) ReadBody<BinSig>(source_, bitKeywords, "ENDSIG", *bits_);
    }

    bool IsFirstBody() {
        if (optical_) source_.Fail("a second kind of signal inside an optical one");
        return !optical_;
    }

    Source& source_;
    Owned<OpSignal> optical_;
    OpSigASE* lastSpectrum_ = nullptr;  // borrowed from optical_
    OpSig* lastChannel_ = nullptr;      // likewise
    Owned<ElecSig> wave_;
    Owned<BinSig> bits_;
};

}  // namespace

Status ReadSignalGroup(LineReader* stream, std::int32_t* type, void** data,
                       std::string& errorText) {
    *data = nullptr;
    if (!stream) {
        errorText += "Input signal file could not be opened\n";
        return Status::Error;
    }
    Source source(*stream, errorText);
    Group group(source);
    group.Read();
    group.HandOver(*type, *data);
    return source.Failed() ? Status::Error : Status::Success;
}

}  // namespace photrak
