// The table of operations that a user model library is given.
#include "kernel/support_table.h"

#include <exception>
#include <utility>

#include "base/memory.h"
#include "kernel/library_records.h"
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
    if (!*place) return 1;
    NoteLibraryRecord(*place, UnknownSigType);
    return 0;
}

/// Entries whose records can become outputs, noted as they are made and freed.
template <auto create, std::int32_t kind>
struct Making;
template <class T, class... Arguments, std::int32_t (*create)(T**, Arguments...), std::int32_t kind>
struct Making<create, kind> {
    static std::int32_t Call(T** place, Arguments... arguments) {
        const std::int32_t failed = create(place, arguments...);
        if (!failed && place && *place) NoteLibraryRecord(*place, kind);
        return failed;
    }
};
template <auto release>
struct Freeing;
template <class T, std::int32_t (*release)(T**)>
struct Freeing<release> {
    static std::int32_t Call(T** place) {
        if (place && *place) ForgetLibraryRecord(*place);
        return release(place);
    }
};

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

        .CreateBinSig = Making<CreateBinSig, BinSigType>::Call,
        .CreateBinSigFromElec = Making<CreateBinSigFromElec, BinSigType>::Call,
        .CreateBinSigFromOp = Making<CreateBinSigFromOp, BinSigType>::Call,
        .FreeBinSig = Freeing<FreeBinSig>::Call,
        .CopyBinSig = Making<CopyBinSig, BinSigType>::Call,

        .CreateElecSig = Making<CreateElecSig, ElecSigType>::Call,
        .CreateElecSigFromBin = Making<CreateElecSigFromBin, ElecSigType>::Call,
        .CreateElecSigFromOp = Making<CreateElecSigFromOp, ElecSigType>::Call,
        .FreeElecSig = Freeing<FreeElecSig>::Call,
        .CopyElecSig = Making<CopyElecSig, ElecSigType>::Call,

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

        .CreateOpSignalWithSig = Making<CreateOpSignalWithSig, OpSigType>::Call,
        .CreateOpSignalFromBin = Making<CreateOpSignalFromBin, OpSigType>::Call,
        .CreateOpSignalFromElec = Making<CreateOpSignalFromElec, OpSigType>::Call,
        .FreeOpSignal = Freeing<FreeOpSignal>::Call,
        .CopyOpSignal = Making<CopyOpSignal, OpSigType>::Call,

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
