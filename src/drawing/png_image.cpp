#include "drawing/png_image.h"

#include <algorithm>
#include <string_view>

#include "drawing/display_list.h"

namespace photrak {
namespace {

class BitWriter {
  public:
    /// The lowest `count` bits of `bits`, lowest first.
    void Put(std::uint32_t bits, int count) {
        held_ |= static_cast<std::uint64_t>(bits) << heldCount_;
        heldCount_ += count;
        while (heldCount_ >= 8) {
            bytes_ += static_cast<char>(held_ & 0xFF);
            held_ >>= 8;
            heldCount_ -= 8;
        }
    }
    /// A Huffman code: highest bit first.
    void PutCode(std::uint32_t code, int count) {
        std::uint32_t turned = 0;
        for (int i = 0; i < count; ++i) turned |= (code >> i & 1u) << (count - 1 - i);
        Put(turned, count);
    }
    std::string Finish() {
        if (heldCount_ > 0) Put(0, 8 - heldCount_);
        return std::move(bytes_);
    }

  private:
    std::string bytes_;
    std::uint64_t held_ = 0;
    int heldCount_ = 0;
};

/// The fixed code of a literal, a length or the end of a block (RFC 1951, 3.2.6).
void PutSymbol(BitWriter& out, std::uint32_t symbol) {
    if (symbol < 144) return out.PutCode(0x30 + symbol, 8);
    if (symbol < 256) return out.PutCode(0x190 + symbol - 144, 9);
    if (symbol < 280) return out.PutCode(symbol - 256, 7);
    out.PutCode(0xC0 + symbol - 280, 8);
}

/// A value with `extra` bits after a code whose table starts at `base`: lengths (3.2.5) and
/// distances.
void PutLength(BitWriter& out, std::uint32_t length) {
    if (length == 258) return PutSymbol(out, 285);
    std::uint32_t base = 3, symbol = 257;
    for (int extra = 0;; ++symbol) {
        if (symbol >= 265 && (symbol - 265) % 4 == 0) ++extra;
        const std::uint32_t span = 1u << extra;
        if (length < base + span) {
            PutSymbol(out, symbol);
            return out.Put(length - base, extra);
        }
        base += span;
    }
}
void PutDistance(BitWriter& out, std::uint32_t distance) {
    std::uint32_t base = 1, code = 0;
    for (int extra = 0;; ++code) {
        if (code >= 4 && code % 2 == 0) ++extra;
        const std::uint32_t span = 1u << extra;
        if (distance < base + span) {
            out.PutCode(code, 5);
            return out.Put(distance - base, extra);
        }
        base += span;
    }
}

constexpr std::size_t longestMatch = 258, shortestMatch = 3, farthestMatch = 32768;

std::size_t MatchLength(std::string_view data, std::size_t at, std::size_t distance) {
    if (distance > at || distance > farthestMatch) return 0;
    const std::size_t most = std::min(longestMatch, data.size() - at);
    std::size_t length = 0;
    while (length < most && data[at + length] == data[at + length - distance]) ++length;
    return length;
}

std::string Deflated(std::string_view data, std::size_t stride) {
    BitWriter out;
    out.Put(1, 1);  // the last block
    out.Put(1, 2);  // with fixed codes
    for (std::size_t at = 0; at < data.size();) {
        const std::size_t run = MatchLength(data, at, 1), above = MatchLength(data, at, stride);
        const std::size_t length = std::max(run, above);
        if (length < shortestMatch) {
            PutSymbol(out, static_cast<unsigned char>(data[at++]));
            continue;
        }
        PutLength(out, static_cast<std::uint32_t>(length));
        PutDistance(out, static_cast<std::uint32_t>(run >= above ? 1 : stride));
        at += length;
    }
    PutSymbol(out, 256);
    return out.Finish();
}

std::string BigEndian(std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes;
}

std::uint32_t Crc32(std::string_view data) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : data) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1u) ? 0xEDB88320 : 0u);
    }
    return ~crc;
}

std::uint32_t Adler32(std::string_view data) {
    constexpr std::uint32_t prime = 65521;
    std::uint32_t a = 1, b = 0;
    for (const char byte : data) {
        a = (a + static_cast<unsigned char>(byte)) % prime;
        b = (b + a) % prime;
    }
    return b << 16 | a;
}

std::string Chunk(std::string_view type, std::string_view content) {
    const std::string checked = std::string(type).append(content);
    return BigEndian(static_cast<std::uint32_t>(content.size())) + checked +
           BigEndian(Crc32(checked));
}

/// A whole file: `rows` of `stride` bytes without their filter bytes; `more` stands before the
/// data.
std::string PngFile(int columns, int rows, char colorType, const std::string& more,
                    std::string_view bytes, std::size_t stride) {
    using namespace std::string_literals;
    std::string filtered;
    filtered.reserve((stride + 1) * static_cast<std::size_t>(rows));
    for (std::size_t row = 0; row < static_cast<std::size_t>(rows); ++row) {
        filtered += '\0';  // no filter
        filtered.append(bytes.substr(row * stride, stride));
    }
    const std::string header = BigEndian(static_cast<std::uint32_t>(columns)) +
                               BigEndian(static_cast<std::uint32_t>(rows)) + "\x08"s + colorType +
                               "\0\0\0"s;
    return "\x89PNG\r\n\x1a\n"s + Chunk("IHDR", header) + more +
           Chunk("IDAT",
                 "\x78\x01"s + Deflated(filtered, stride + 1) + BigEndian(Adler32(filtered))) +
           Chunk("IEND", "");
}

std::string_view BytesOf(const std::vector<std::uint8_t>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

std::string PngBytes(const DensityImage& image, Theme theme) {
    using namespace std::string_literals;
    std::string palette;
    for (int level = 0; level < 256; ++level) {
        const Color color = RampColor(level, theme);
        for (const std::uint8_t part : {color.red, color.green, color.blue})
            palette += static_cast<char>(part);
    }
    const std::string more = Chunk("PLTE", palette) + Chunk("tRNS", "\0"s);
    return PngFile(image.columns, image.rows, 3, more, BytesOf(image.levels),
                   static_cast<std::size_t>(image.columns));
}

std::string PngBytes(const BitmapImage& image) {
    return PngFile(image.columns, image.rows, 2, {}, BytesOf(image.pixels),
                   3 * static_cast<std::size_t>(image.columns));
}

std::string Base64(std::string_view bytes) {
    static constexpr char digits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= count ? digits[group >> (18 - 6 * k) & 63] : '=';
        }
    }
    return text;
}

}  // namespace photrak
