// Blocks that share their channels out among threads: the same bits for any number of them.
#include <vector>

#include "models/optical/amplifier.h"
#include "models/optical/channel_merge.h"
#include "models/optical/multiport.h"
#include "models/optical/optical_filter.h"
#include "models/optical_fixture.h"
#include "support/recording_host.h"

namespace photrak {
namespace {

constexpr double c = 299792458.0;
constexpr std::int32_t samples = 4096;

/// Seven channels 10 GHz apart, each a tone of its own; every third has a second polarization.
Owned<OpSignal> SevenChannels() {
    Owned<OpSignal> all;
    for (int k = 0; k < 7; ++k) {
        const double wavelength = c / (193.1e12 + 1e10 * k);
        Owned<OpSignal> next = k % 3 == 0 ? Tone(samples, 3 * k + 1, wavelength)
                                          : Carrier(0.5 + k, samples, wavelength);
        OpSig& channel = *next->channels;
        for (std::int32_t i = 1; i <= samples; ++i) channel.Ex_samples[i].im += 1e-3 * (i % 97) * k;
        if (all)
            AppendChannel(*all, std::move(next));
        else
            all = std::move(next);
    }
    return all;
}

using Bits = std::vector<double>;

void AddBits(const OpSig* channels, Bits& bits) {
    for (const OpSig& channel : Items(channels)) {
        bits.push_back(channel.wavelength);
        for (const Complex* field : {channel.Ex_samples, channel.Ey_samples}) {
            for (std::int32_t i = 1; field && i <= channel.noPoints; ++i) {
                bits.push_back(field[i].re);
                bits.push_back(field[i].im);
            }
        }
    }
}

Bits Filtered(OpSignal& light, const ModelReport& report) {
    OpticalFilterRecord record;
    record.wavelength = c / 193.12e12;
    record.BW = 0.2e-9;
    record.order = 2;
    FilterResponse response;
    EXPECT_EQ(PrepareFilterResponse(record, response, report), Status::Success);
    Owned<OpSignal> copy;
    EXPECT_TRUE(MakeFilterCopy(response, light, copy));
    EXPECT_EQ(FilterInto(response, light, copy, report), Status::Success);
    EXPECT_EQ(ApplyOpticalFilter(response, light.channels, nullptr, report), Status::Success);
    Bits bits, ofCopy;
    AddBits(light.channels, bits);
    AddBits(copy->channels, ofCopy);
    EXPECT_TRUE(ofCopy == bits);
    return bits;
}

Bits Amplified(OpSignal& light, const ModelReport& report) {
    EdfaParams params;
    params.type = "custom";
    params.gain = 10.0;
    params.Psat = 1e3;
    params.Fn = 2.0;
    params.BW = 40e-9;
    params.noiseResolution = 1e-9;
    params.noiseCenter = 1.55e-6;
    EXPECT_EQ(ReadSCurves("0 -30\n1500 3\n1550 17\n1560 11\n1600 2\n-1 0\n", "curves", "%s",
                          params.gainCurves, report),
              Status::Success);
    Nodelist input{nullptr, OpSigType, &light}, output{};
    EXPECT_EQ(EDFA(&input, params, &output, report), Status::Success);
    const Owned<OpSignal> made(static_cast<OpSignal*>(output.sig));
    Bits bits;
    if (!made) return bits;
    AddBits(made->channels, bits);
    for (std::int32_t i = 1; i <= made->noise->noPoints; ++i)
        bits.push_back(made->noise->powerSamples[i]);
    return bits;
}

Bits Merged(OpSignal& light, const ModelReport& report) {
    Owned<OpSig> sum;
    EXPECT_EQ(MergeChannels(light.channels, sum, report), Status::Success);
    Bits bits;
    AddBits(sum.get(), bits);
    return bits;
}

/// One input, five outputs, elements that change over the band.
Bits ThroughDevice(OpSignal& light, const ModelReport& report) {
    constexpr std::int32_t ports = 5, points = 3;
    ResetTransferTable();
    TransferMatrix& table = TransferTable();
    EXPECT_TRUE(SizeTransferMatrix(table, 1, ports, points));
    table.firstWavelength = 1.5e-6;
    table.lastWavelength = 1.6e-6;
    for (int k = 0; k < ports * points; ++k) table.values.get()[k] = {0.1 * k, 1.0 / (k + 1)};
    std::vector<Nodelist> outputs(ports);
    for (std::size_t k = 0; k + 1 < ports; ++k) outputs[k].next = &outputs[k + 1];
    Nodelist input{nullptr, OpSigType, &light};
    EXPECT_EQ(ApplyTransferTable(&input, outputs.data(), SignalBandwidth::Wide, report),
              Status::Success);
    Bits bits;
    for (Nodelist& cell : outputs) {
        const Owned<OpSignal> made(static_cast<OpSignal*>(cell.sig));
        if (made) AddBits(made->channels, bits);
    }
    ResetTransferTable();
    return bits;
}

TEST(Threads, ChangeNoBitOfAnyBlock) {
    const struct {
        const char* name;
        Bits (*run)(OpSignal& light, const ModelReport& report);
    } blocks[] = {{"filter", Filtered},
                  {"amplifier", Amplified},
                  {"merge", Merged},
                  {"multiport device", ThroughDevice}};
    for (const auto& block : blocks) {
        SCOPED_TRACE(block.name);
        Bits alone;
        for (const char* threads : {"1", "2", "3", "8"}) {
            RecordingHost host;
            host.environment["PHOTRAK_THREADS"] = threads;
            std::string text;
            const Owned<OpSignal> light = SevenChannels();
            const Bits bits = block.run(*light, {"box", text});
            EXPECT_EQ(text, "");
            if (alone.empty()) alone = bits;
            EXPECT_GT(bits.size(), 2u * samples);
            EXPECT_TRUE(bits == alone) << threads << " threads";
        }
    }
}

}  // namespace
}  // namespace photrak
