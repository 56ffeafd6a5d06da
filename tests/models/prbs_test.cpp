#include "models/sources/prbs.h"

#include <gtest/gtest.h>
#include <numeric>
#include <tuple>

#include "models/sources/integer_scan.h"
#include "support/signals.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

using Bits = std::vector<int>;

/// One list of bits for each output port, and what was told.
struct Generated {
    Status status = Status::Success;
    std::string text;
    std::vector<Bits> ports;
};

Owned<Nodelist> OutputCells(int count) {
    Owned<Nodelist> cells;
    for (int i = 0; i < count; ++i) PushCell(cells, Owned<BinSig>(), UnknownSigType);
    return cells;
}

Generated Generate(const PrbsParams& params, int ports = 1) {
    Generated result;
    const Owned<Nodelist> cells = OutputCells(ports);
    result.status = PRBS_Generator(params, cells.get(), {"block", result.text});
    for (const Nodelist& cell : Items(cells.get())) {
        if (!cell.sig) continue;
        EXPECT_EQ(cell.sigType, BinSigType);
        const auto& sig = *static_cast<const BinSig*>(cell.sig);
        EXPECT_EQ(sig.bitRate, params.bitRate);
        EXPECT_EQ(sig.startTime, params.startTime);
        result.ports.emplace_back(sig.bitSequence + 1, sig.bitSequence + 1 + sig.noPoints);
    }
    return result;
}

PrbsParams Params(std::string type, std::int32_t exponent) {
    PrbsParams params;
    params.patternType = std::move(type);
    params.patternLength = exponent;
    params.bitRate = 2.5e9;
    params.startTime = 1e-10;
    return params;
}

/// 2^exponent bits from a file with that text.
PrbsParams Custom(const TempDir& dir, std::string_view text, std::int32_t exponent) {
    PrbsParams params = Params("custom", exponent);
    params.filename = dir.Write("pattern.txt", text);
    return params;
}

Bits OnePort(const PrbsParams& params) {
    const Generated made = Generate(params);
    EXPECT_EQ(made.status, Status::Success) << made.text;
    return made.ports.size() == 1 ? made.ports[0] : Bits{};
}

// A register that multiplies by x modulo a primitive polynomial p gives bits that obey
// o[k+n] = sum of p_e o[k+e] over the lower exponents e of p, and repeats after 2^n - 1 bits of
// which 2^(n-1) are 1. The exponents are those of the tables of primitive polynomials over GF(2).
TEST(Prbs, ObeysThePrimitivePolynomialOfEachDegree) {
    const std::vector<std::vector<int>> lowerExponents = {
        {0, 1}, {0, 1},       {0, 2}, {0, 1},       {0, 1},       {0, 2, 3, 4},
        {0, 4}, {0, 3},       {0, 2}, {0, 1, 4, 6}, {0, 1, 3, 4}, {0, 1, 3, 5},
        {0, 1}, {0, 2, 3, 5}, {0, 3}, {0, 1, 2, 5}};
    for (int n = 3; n <= maxPatternExponent; ++n) {
        SCOPED_TRACE(n);
        const Bits bits = OnePort(Params("PRBS", n));
        const std::size_t size = std::size_t{1} << n;
        ASSERT_EQ(bits.size(), size);
        std::size_t broken = 0;
        for (std::size_t k = 0; k + n < size; ++k) {
            int sum = 0;
            for (int e : lowerExponents[n - 3]) sum ^= bits[k + e];
            broken += sum != bits[k + n];
        }
        EXPECT_EQ(broken, 0u);
        EXPECT_EQ(bits.back(), bits.front());
        EXPECT_EQ(std::accumulate(bits.begin(), bits.end() - 1, 0), 1 << (n - 1));
    }
}

// By hand for x^7 + x + 1 from the state 1111111: the state loses a 1 per step until it is 1, then
// shifts up to the test bit.
TEST(Prbs, StartsFromAStateOfOnes) {
    Bits bits = OnePort(Params("PRBS", 7));
    bits.resize(13);
    EXPECT_EQ(bits, (Bits{1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 1}));
}

TEST(Prbs, MakesShortRegularAndEmptyPatterns) {
    const TempDir dir;
    const struct {
        const char* type;
        int exponent;
        Bits bits;
    } rows[] = {{"PRBS", 0, {0}},          {"PRBS", 1, {0, 1}},
                {"PRBS", 2, {1, 0, 0, 0}}, {"one", 0, {1}},
                {"zero", 1, {0, 0}},       {"alternating", 2, {1, 0, 1, 0}},
                {"single", 0, {1}},        {"single", 2, {0, 1, 0, 0}},
                {"PRBS", -1, {}},          {"alternating", INT32_MIN, {}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.type << " " << row.exponent);
        PrbsParams params = Custom(dir, "1 1 1 1", row.exponent);
        params.patternType = row.type;
        if (row.exponent < 0) params.offset = params.preBits = params.postBits = 5;
        EXPECT_EQ(OnePort(params), row.bits);
    }
}

TEST(Prbs, RefusesWhatItCannotMake) {
    PrbsParams missing = Params("custom", 3);
    missing.filename = "100%n/no such file";
    const std::pair<PrbsParams, const char*> rows[] = {
        {missing,
         "Can not open file: 100%n/no such file.\n"
         "ERROR: component 'block': pattern file '100%n/no such file': No such file or "
         "directory\n"},
        {Params("Prbs%s", 3),
         "Error pattern type for the pattern generator: Prbs%s\n"
         "Allowed types are PRBS, alternating, one, zero, single, and custom. \n"},
        {Params("PRBS", 19),
         "Error pattern length for the pattern generator: 19\n"
         "The exponent of the pattern length must be at most 18. \n"}};
    for (const auto& [params, text] : rows) {
        const Generated made = Generate(params);
        EXPECT_EQ(made.status, Status::Error);
        EXPECT_EQ(made.text, text);
    }
}

TEST(Prbs, RotatesFromPortToPort) {
    const TempDir dir;
    const struct {
        std::int32_t offset, shift;
        std::vector<Bits> ports;
    } rows[] = {{1, 1, {{2, 3, 4, 1}, {3, 4, 1, 2}, {4, 1, 2, 3}, {1, 2, 3, 4}}},
                {INT32_MIN + 3, INT32_MAX, {{4, 1, 2, 3}, {3, 4, 1, 2}}}};
    for (const auto& row : rows) {
        PrbsParams params = Custom(dir, "1 2 3 4", 2);
        params.offset = row.offset;
        params.shift = row.shift;
        EXPECT_EQ(Generate(params, static_cast<int>(row.ports.size())).ports, row.ports);
    }
}

TEST(Prbs, ClearsLeadingAndTrailingBitsOfEveryOutput) {
    const TempDir dir;
    PrbsParams custom = Custom(dir, "1 1 1 1", 2), params = Params("one", 2);
    params.shift = 1;
    for (const auto& [preBits, postBits, bits] :
         {std::tuple{1, 2, Bits{0, 1, 0, 0}}, {0, 100, {0, 0, 0, 0}}, {-1, -100, {1, 1, 1, 1}}}) {
        params.preBits = custom.preBits = preBits;
        params.postBits = custom.postBits = postBits;
        EXPECT_EQ(Generate(params, 2).ports, (std::vector<Bits>{bits, bits}));
        EXPECT_EQ(OnePort(custom), (Bits{1, 1, 1, 1})) << "a custom pattern knows no such bits";
    }
}

TEST(Prbs, ReadsAtMost512RowsOfEightAndRepeatsTheLastValueOfAShortFile) {
    const TempDir dir;
    EXPECT_EQ(OnePort(Custom(dir, "", 2)), (Bits{0, 0, 0, 0}));
    EXPECT_EQ(OnePort(Custom(dir, "1\n0\t1", 3)), (Bits{1, 0, 1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(OnePort(Custom(dir, "0 1 x 0 0", 3)), (Bits{0, 1, 1, 1, 1, 1, 1, 1}))
        << "reading stays where it stumbled";
    Bits expected(8192, 0);
    std::fill_n(expected.begin(), 4096, 1);
    EXPECT_EQ(OnePort(Custom(dir, "1", 13)), expected);
}

// By design: a custom pattern tells of its outputs under the other function's name.
TEST(Prbs, TellsOfTheOutputsOfACustomPatternByTheOtherName) {
    const TempDir dir;
    const PrbsParams params = Custom(dir, "1", 2);
    const Owned<Nodelist> cells = OutputCells(1);
    std::string text;
    RefuseAllocationsFrom(3);  // behind the pattern and its bits
    EXPECT_EQ(PRBS_Generator(params, cells.get(), {"block", text}), Status::Error);
    RefuseAllocationsFrom(-1);
    EXPECT_TRUE(text.ends_with("to binary signal in PRBS_Generator().\n")) << text;
}

TEST(IntegerScan, ConvertsLikeTheShortConversionOfTheCLibrary) {
    const struct {
        const char* text;
        int value;  // 99: none is read
        const char* rest;
    } rows[] = {{"  12 3", 12, " 3"}, {"08", 0, "8"},        {"0x1F,", 31, ","},
                {"0x", 0, "x"},       {"-70000", -4464, ""}, {"99999999999999999999", -1, ""},
                {"", 99, ""},         {"- 1", 99, "- 1"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        std::string_view text = row.text;
        std::int16_t value = 99;
        EXPECT_EQ(ScanShort(text, value), row.value != 99);
        EXPECT_EQ(value, row.value);
        EXPECT_EQ(text, row.rest);
    }
}

}  // namespace
}  // namespace photrak
