#include "gui/packed_picture.h"

#include <algorithm>
#include <array>
#include <memory>

#include "gui/picture_prediction.h"

namespace norava {

namespace {

using namespace packed;

constexpr int kMaxScale = 4;

// Bits from the highest of each byte down. Past the end it gives zeros and remembers.
class BitReader {
  public:
    explicit BitReader(std::span<const uint8_t> data) : rest(data) {}

    // At most kMaxCodeBits.
    [[nodiscard]] uint32_t Peek(int count) {
        if (held < count) Refill();
        return static_cast<uint32_t>(bits >> (held - count)) & ((1u << count) - 1u);
    }
    void Skip(int count) { held -= count; }
    [[nodiscard]] uint32_t Take(int count) {
        if (count > kMaxCodeBits) {
            const uint32_t high = Take(count - kMaxCodeBits);
            return high << kMaxCodeBits | Take(kMaxCodeBits);
        }
        const uint32_t value = Peek(count);
        Skip(count);
        return value;
    }
    [[nodiscard]] bool IsExhausted() const { return held < missing; }

  private:
    // Whole bytes as long as they fit.
    void Refill() {
        while (held <= kBits - 8) {
            bits <<= 8;
            held += 8;
            if (rest.empty()) {
                missing += 8;
            } else {
                bits |= rest.front();
                rest = rest.subspan(1);
            }
        }
    }

    static constexpr int kBits = 64;
    std::span<const uint8_t> rest;
    uint64_t bits = 0;
    int held = 0;
    int missing = 0;  // bits held that were never there
};

// A canonical Huffman code, looked up by the next kMaxCodeBits bits.
class CodeTable {
  public:
    // False when the lengths name more codes than there are.
    [[nodiscard]] bool Build(std::span<const uint8_t> lengths) {
        entries.fill({});
        size_t next = 0;
        for (int length = 1; length <= kMaxCodeBits; ++length) {
            const size_t share = size_t{1} << (kMaxCodeBits - length);
            for (size_t code = 0; code < lengths.size(); ++code) {
                if (lengths[code] != length) continue;
                if (next + share > entries.size()) return false;
                const Entry entry{static_cast<uint16_t>(code), static_cast<uint16_t>(length)};
                std::fill_n(entries.begin() + static_cast<std::ptrdiff_t>(next), share, entry);
                next += share;
            }
        }
        return true;
    }

    // Negative when no code begins like this.
    [[nodiscard]] int Read(BitReader& bits) const {
        const Entry entry = entries[bits.Peek(kMaxCodeBits)];
        if (entry.length == 0) return -1;
        bits.Skip(entry.length);
        return entry.code;
    }

  private:
    struct Entry {
        uint16_t code = 0;
        uint16_t length = 0;
    };
    std::array<Entry, size_t{1} << kMaxCodeBits> entries;
};

class Unpacker {
  public:
    Unpacker(const PackedPicture& info, std::span<const uint8_t> codes)
        : picture(info), bits(codes) {}

    [[nodiscard]] bool BuildTables(std::span<const uint8_t> nibbles) {
        uint8_t lengths[kGreenCodes];
        size_t at = 0;
        for (int channel = 0; channel < kChannels; ++channel) {
            const auto count = static_cast<size_t>(CodesOf(channel));
            for (size_t code = 0; code < count; ++code, ++at)
                lengths[code] = at % 2 ? nibbles[at / 2] >> 4 : nibbles[at / 2] & 15;
            if (!tables[static_cast<size_t>(channel)].Build({lengths, count})) return false;
        }
        return true;
    }

    [[nodiscard]] bool UnpackRow(uint32_t* row, size_t y) {
        const auto width = static_cast<size_t>(picture.GetStoredSize().cx);
        const auto frame = static_cast<size_t>(picture.frameRows);
        const uint32_t* below = y > 0 ? row - width : nullptr;
        switch (static_cast<RowMode>(bits.Take(kRowModeBits))) {
            case RowMode::gradient:
                return UnpackPixels<RowMode::gradient>(row, below, nullptr, width);
            case RowMode::average:
                return UnpackPixels<RowMode::average>(row, below, nullptr, width);
            case RowMode::left:
                return UnpackPixels<RowMode::left>(row, below, nullptr, width);
            case RowMode::frame:
                return frame > 0 && y >= frame &&
                       UnpackPixels<RowMode::frame>(row, below, row - frame * width, width);
        }
        return false;
    }

  private:
    template <RowMode mode>
    [[nodiscard]] bool UnpackPixels(uint32_t* row, const uint32_t* below, const uint32_t* earlier,
                                    size_t width) {
        for (size_t x = 0; x < width;) {
            const int code = tables[0].Read(bits);
            if (code < 0) return false;
            if (code < kByteCodes) {
                Difference difference{static_cast<uint8_t>(code), 0, 0, 0};
                if (!ReadRest(difference)) return false;
                const uint32_t expected = Predict<mode>(row, below, earlier, x);
                row[x++] = AddBytes(expected, JoinDifference(difference));
                continue;
            }
            const int run = code - kByteCodes;
            const size_t count = (size_t{1} << run) + bits.Take(run);
            if (count > width - x) return false;
            const size_t end = x + count;
            if constexpr (mode == RowMode::frame) std::copy_n(earlier + x, count, row + x);
            if constexpr (mode != RowMode::frame)
                for (size_t at = x; at < end; ++at)
                    row[at] = Predict<mode>(row, below, earlier, at);
            x = end;
        }
        return !bits.IsExhausted();
    }

    [[nodiscard]] bool ReadRest(Difference& difference) {
        const int red = tables[1].Read(bits), blue = tables[2].Read(bits);
        const int alpha = picture.hasAlpha ? tables[3].Read(bits) : 0;
        difference.red = static_cast<uint8_t>(red);
        difference.blue = static_cast<uint8_t>(blue);
        difference.alpha = static_cast<uint8_t>(alpha);
        return red >= 0 && blue >= 0 && alpha >= 0;
    }

    const PackedPicture& picture;
    BitReader bits;
    std::array<CodeTable, kChannels> tables;
};

}  // namespace

std::optional<PackedPicture> ReadPackedHeader(std::span<const uint8_t> packed) {
    if (packed.size() < kHeaderBytes + kLengthBytes || packed[0] != 'N' || packed[1] != 'P')
        return {};
    const auto number = [packed](size_t at) { return packed[at] | packed[at + 1] << 8; };
    PackedPicture picture;
    picture.scale = packed[2];
    picture.hasAlpha = packed[3] == 1;
    picture.size = CSize(number(4), number(6));
    picture.frameRows = number(8);
    if (picture.scale < 1 || picture.scale > kMaxScale || packed[3] > 1) return {};
    if (picture.size.cx < 1 || picture.size.cy < 1) return {};
    // Every row costs two bits and a code at least; that bounds what a small file may claim.
    const CSize stored = picture.GetStoredSize();
    const auto bitsThere = (packed.size() - kHeaderBytes - kLengthBytes) * 8;
    const auto codesARow = static_cast<size_t>((stored.cx + 65534) / 65535);
    if (static_cast<size_t>(stored.cy) * (kRowModeBits + codesARow) > bitsThere) return {};
    return picture;
}

bool UnpackPicture(std::span<const uint8_t> packed, std::span<uint32_t> words) {
    const std::optional<PackedPicture> picture = ReadPackedHeader(packed);
    if (!picture) return false;
    const auto width = static_cast<size_t>(picture->GetStoredSize().cx);
    const auto height = static_cast<size_t>(picture->GetStoredSize().cy);
    if (words.size() != width * height) return false;
    const auto unpacker =
        std::make_unique<Unpacker>(*picture, packed.subspan(kHeaderBytes + kLengthBytes));
    if (!unpacker->BuildTables(packed.subspan(kHeaderBytes, kLengthBytes))) return false;
    for (size_t y = 0; y < height; ++y)
        if (!unpacker->UnpackRow(words.data() + y * width, y)) return false;
    if (!picture->hasAlpha)
        for (uint32_t& word : words)
            word |= 0xFF000000u;
    return true;
}

}  // namespace norava
