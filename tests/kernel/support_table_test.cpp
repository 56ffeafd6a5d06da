// The table for user libraries as a library sees it: a row of pointers at fixed places.
#include "kernel/support_table.h"

#include <bit>
#include <cstddef>
#include <iterator>

#include "kernel/signals.h"
#include "numeric/fft.h"
#include "support/recording_host.h"
#include "support/signals.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

struct Place {
    const char* name;
    std::size_t offset;
    std::uintptr_t entry;  // 0: a wrapper of the table's own
};

// Libraries in the field were compiled against these places; none may ever move.
TEST(SupportTable, EntriesStandInTheOrderOfTheContract) {
// clang-format off
#define OWN(name) {#name, offsetof(PhotrakSupport, name), 0}
#define PLACE(name) {#name, offsetof(PhotrakSupport, name), reinterpret_cast<std::uintptr_t>(name)}
    const Place places[] = {
        OWN(Allocate), PLACE(FFTIndexToBin), PLACE(FFTBinToIndex), OWN(DoFFTFlagged),
        OWN(CreateBinSig), OWN(CreateBinSigFromElec), OWN(CreateBinSigFromOp),
        OWN(FreeBinSig), OWN(CopyBinSig),
        OWN(CreateElecSig), OWN(CreateElecSigFromBin), OWN(CreateElecSigFromOp),
        OWN(FreeElecSig), OWN(CopyElecSig),
        PLACE(CreateOpSig), PLACE(CreateOpSigFromBin), PLACE(CreateOpSigFromElec),
        PLACE(FreeOpSig), PLACE(FreeOpSigList), PLACE(CopyOpSig), PLACE(CopyOpSigList),
        PLACE(CreateOpSigASE), PLACE(FreeOpSigASE), PLACE(FreeOpSigASEList),
        PLACE(CopyOpSigASE), PLACE(CopyOpSigASEList),
        OWN(CreateOpSignalWithSig), OWN(CreateOpSignalFromBin), OWN(CreateOpSignalFromElec),
        OWN(FreeOpSignal), OWN(CopyOpSignal),
        PLACE(AddEySamples), PLACE(ResizeElecSig), PLACE(ResizeOpSig),
        PLACE(CopyBitInfoOpToElec), PLACE(CopyBitInfoElecToOp), PLACE(CopyBitInfoBinToElec),
        PLACE(CopyBitInfoBinToOp),
    };
#undef PLACE
#undef OWN
    // clang-format on
    struct Row {
        std::uintptr_t entries[38];
    };
    static_assert(sizeof(PhotrakSupport) == sizeof(Row));
    ASSERT_EQ(std::size(places), 38u);
    const Row row = std::bit_cast<Row>(SupportTable());
    for (std::size_t i = 0; i < 38; ++i) {
        SCOPED_TRACE(places[i].name);
        EXPECT_NE(row.entries[i], 0u);
        EXPECT_EQ(places[i].offset, i * sizeof(std::uintptr_t));
        if (places[i].entry) {
            EXPECT_EQ(row.entries[i], places[i].entry);
        }
    }
}

TEST(SupportTable, TransformThatFailsDoesNotUnwindTheLibrary) {
    const TempDir directory;  // takes pherror.txt
    const RecordingHost host;
    const Owned<OpSig> sig = RampChannel(8, 1.0);
    EXPECT_EQ(SupportTable().DoFFTFlagged(sig->Ex_samples, 8, 1, 0), 8);
    EXPECT_NEAR(sig->Ex_samples[1].re, 36.0, 1e-12);  // DC: 1 + 2 + ... + 8
    EXPECT_EQ(TakeSupportFailure(), std::nullopt);

    EXPECT_EQ(SupportTable().DoFFTFlagged(sig->Ex_samples, 7, 1, 0), 0);
    EXPECT_NE(TakeSupportFailure(), std::nullopt);
    EXPECT_EQ(TakeSupportFailure(), std::nullopt);
    EXPECT_EQ(SupportTable().DoFFTFlagged(nullptr, 8, 1, 0), 0);
}

}  // namespace
}  // namespace photrak
