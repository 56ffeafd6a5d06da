// The table of operations that a user model library is given.
#include "kernel/support_table.h"

#include <exception>
#include <utility>

#include "base/memory.h"
#include "kernel/signals.h"
#include "numeric/fft.h"

namespace photrak {
namespace {

std::optional<std::string>& Failure() {
    static std::optional<std::string> failure;
    return failure;
}

std::int32_t AllocateForLibrary(void** place, std::size_t bytes) {
    if (!place) return 1;
    *place = AllocateZeroed(bytes, 1);
    return *place ? 0 : 1;
}

std::int32_t TransformForLibrary(Complex* data, std::int32_t n, std::int32_t sign,
                                 std::int32_t flags) {
    if (!data) return 0;
    try {
        return DoFFTFlagged(data, n, sign, flags);
    } catch (const std::exception& failure) {
        if (!Failure()) Failure() = failure.what();
        return 0;
    }
}

}  // namespace

const PhotrakSupport& SupportTable() {
    // The compiler checks that these names stand in the order of the record.
    static const PhotrakSupport table = {
        .Allocate = AllocateForLibrary,
        .FFTIndexToBin = FFTIndexToBin,
        .FFTBinToIndex = FFTBinToIndex,
        .DoFFTFlagged = TransformForLibrary,

        .CreateBinSig = CreateBinSig,
        .CreateBinSigFromElec = CreateBinSigFromElec,
        .CreateBinSigFromOp = CreateBinSigFromOp,
        .FreeBinSig = FreeBinSig,
        .CopyBinSig = CopyBinSig,

        .CreateElecSig = CreateElecSig,
        .CreateElecSigFromBin = CreateElecSigFromBin,
        .CreateElecSigFromOp = CreateElecSigFromOp,
        .FreeElecSig = FreeElecSig,
        .CopyElecSig = CopyElecSig,

        .CreateOpSig = CreateOpSig,
        .CreateOpSigFromBin = CreateOpSigFromBin,
        .CreateOpSigFromElec = CreateOpSigFromElec,
        .FreeOpSig = FreeOpSig,
        .FreeOpSigList = FreeOpSigList,
        .CopyOpSig = CopyOpSig,
        .CopyOpSigList = CopyOpSigList,

        .CreateOpSigASE = CreateOpSigASE,
        .FreeOpSigASE = FreeOpSigASE,
        .FreeOpSigASEList = FreeOpSigASEList,
        .CopyOpSigASE = CopyOpSigASE,
        .CopyOpSigASEList = CopyOpSigASEList,

        .CreateOpSignalWithSig = CreateOpSignalWithSig,
        .CreateOpSignalFromBin = CreateOpSignalFromBin,
        .CreateOpSignalFromElec = CreateOpSignalFromElec,
        .FreeOpSignal = FreeOpSignal,
        .CopyOpSignal = CopyOpSignal,

        .AddEySamples = AddEySamples,
        .ResizeElecSig = ResizeElecSig,
        .ResizeOpSig = ResizeOpSig,

        .CopyBitInfoOpToElec = CopyBitInfoOpToElec,
        .CopyBitInfoElecToOp = CopyBitInfoElecToOp,
        .CopyBitInfoBinToElec = CopyBitInfoBinToElec,
        .CopyBitInfoBinToOp = CopyBitInfoBinToOp,
    };
    return table;
}

std::optional<std::string> TakeSupportFailure() {
    return std::exchange(Failure(), std::nullopt);
}

}  // namespace photrak
