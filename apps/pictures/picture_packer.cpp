#include "pictures/picture_packer.h"

#include <array>
#include <bit>
#include <queue>

#include "gui/picture_prediction.h"

namespace norava {

namespace {

using namespace packed;

// One code of one channel, or bare bits (channel kBareBits).
constexpr uint8_t kBareBits = kChannels;
struct Token {
    uint8_t channel;
    uint8_t bareCount;
    uint16_t value;
};

class BitWriter {
  public:
    explicit BitWriter(std::vector<uint8_t>& output) : bytes(output) {}

    void Write(uint32_t value, int count) {
        while (count-- > 0) {
            if (used == 0) bytes.push_back(0);
            bytes.back() = static_cast<uint8_t>(bytes.back() | (value >> count & 1) << (7 - used));
            used = (used + 1) % 8;
        }
    }

  private:
    std::vector<uint8_t>& bytes;
    int used = 0;
};

// Lengths of a Huffman code over these counts, 0 for what never occurs; the counts are levelled
// until no code is longer than kMaxCodeBits.
std::vector<uint8_t> CodeLengths(std::vector<uint64_t> counts) {
    struct Node {
        uint64_t count;
        int parent;
    };
    const size_t leaves = counts.size();
    for (;;) {
        std::vector<Node> nodes;
        using Item = std::pair<uint64_t, int>;
        std::priority_queue<Item, std::vector<Item>, std::greater<>> open;
        for (size_t i = 0; i < leaves; ++i) {
            nodes.push_back({counts[i], -1});
            if (counts[i] > 0) open.emplace(counts[i], static_cast<int>(i));
        }
        std::vector<uint8_t> lengths(leaves, 0);
        if (open.size() == 1) lengths[static_cast<size_t>(open.top().second)] = 1;
        if (open.size() < 2) return lengths;
        while (open.size() > 1) {
            const auto [a, first] = open.top();
            open.pop();
            const auto [b, second] = open.top();
            open.pop();
            const int parent = static_cast<int>(nodes.size());
            nodes[static_cast<size_t>(first)].parent = parent;
            nodes[static_cast<size_t>(second)].parent = parent;
            nodes.push_back({a + b, -1});
            open.emplace(a + b, parent);
        }
        int longest = 0;
        for (size_t i = 0; i < leaves; ++i) {
            int length = 0;
            for (int at = nodes[i].parent; at >= 0; at = nodes[static_cast<size_t>(at)].parent)
                ++length;
            lengths[i] = static_cast<uint8_t>(length);
            longest = std::max(longest, length);
        }
        if (longest <= kMaxCodeBits) return lengths;
        for (uint64_t& count : counts)
            count = (count + 1) / 2;
    }
}

// The code words that CodeTable assigns: by length, then by value.
std::vector<uint32_t> CodeWords(const std::vector<uint8_t>& lengths) {
    std::vector<uint32_t> words(lengths.size());
    uint32_t next = 0;
    for (int length = 1; length <= kMaxCodeBits; ++length) {
        for (size_t i = 0; i < lengths.size(); ++i) {
            if (lengths[i] != length) continue;
            words[i] = next >> (kMaxCodeBits - length);
            next += 1u << (kMaxCodeBits - length);
        }
    }
    return words;
}

class Packer {
  public:
    Packer(const PackedPicture& info, std::vector<uint32_t> pixels)
        : picture(info),
          words(std::move(pixels)),
          width(static_cast<size_t>(info.GetStoredSize().cx)),
          height(static_cast<size_t>(info.GetStoredSize().cy)) {
        for (size_t channel = 0; channel < counts.size(); ++channel)
            counts[channel].resize(static_cast<size_t>(CodesOf(static_cast<int>(channel))));
        if (picture.hasAlpha) return;
        for (uint32_t& word : words)
            word &= 0x00FFFFFFu;
    }

    std::vector<uint8_t> Pack() {
        for (size_t y = 0; y < height; ++y)
            PackRow(y);
        return Encode();
    }

  private:
    template <RowMode mode>
    std::vector<uint32_t> Differences(size_t y) const {
        const uint32_t* row = words.data() + y * width;
        const uint32_t* below = y > 0 ? row - width : nullptr;
        const auto frame = static_cast<size_t>(picture.frameRows);
        const uint32_t* earlier = mode == RowMode::frame ? row - frame * width : nullptr;
        std::vector<uint32_t> differences(width);
        for (size_t x = 0; x < width; ++x)
            differences[x] = SubtractBytes(row[x], Predict<mode>(row, below, earlier, x));
        return differences;
    }

    // About how many bits a row of differences will take.
    static uint64_t Cost(const std::vector<uint32_t>& differences) {
        const auto bits = [](uint8_t byte) {
            const int size = std::abs(static_cast<int8_t>(byte));
            return 2 * std::bit_width(static_cast<unsigned>(size)) + 1;
        };
        uint64_t cost = 0;
        for (const uint32_t word : differences) {
            const Difference d = SplitDifference(word);
            if (word != 0)
                cost += static_cast<uint64_t>(bits(d.green) + bits(d.red) + bits(d.blue) +
                                              bits(d.alpha));
        }
        return cost;
    }

    void PackRow(size_t y) {
        std::vector<uint32_t> best = Differences<RowMode::gradient>(y);
        RowMode bestMode = RowMode::gradient;
        const auto consider = [&](RowMode mode, std::vector<uint32_t> differences) {
            if (Cost(differences) >= Cost(best)) return;
            best = std::move(differences);
            bestMode = mode;
        };
        consider(RowMode::average, Differences<RowMode::average>(y));
        consider(RowMode::left, Differences<RowMode::left>(y));
        const auto frame = static_cast<size_t>(picture.frameRows);
        if (frame > 0 && y >= frame) consider(RowMode::frame, Differences<RowMode::frame>(y));
        AddBare(static_cast<uint32_t>(bestMode), kRowModeBits);
        AddRow(best);
    }

    void AddRow(const std::vector<uint32_t>& differences) {
        for (size_t x = 0; x < width;) {
            size_t run = 0;
            while (x + run < width && differences[x + run] == 0)
                ++run;
            if (run > 0) {
                const int log = static_cast<int>(std::bit_width(run)) - 1;
                AddCode(0, static_cast<uint16_t>(kByteCodes + log));
                AddBare(static_cast<uint32_t>(run - (size_t{1} << log)), log);
                x += run;
                continue;
            }
            const Difference d = SplitDifference(differences[x++]);
            AddCode(0, d.green);
            AddCode(1, d.red);
            AddCode(2, d.blue);
            if (picture.hasAlpha) AddCode(3, d.alpha);
        }
    }

    void AddCode(uint8_t channel, uint16_t value) {
        tokens.push_back({channel, 0, value});
        ++counts[channel][value];
    }
    void AddBare(uint32_t value, int count) {
        if (count > 0)
            tokens.push_back(
                {kBareBits, static_cast<uint8_t>(count), static_cast<uint16_t>(value)});
    }

    std::vector<uint8_t> Encode() const {
        std::vector<uint8_t> bytes = Header();
        std::array<std::vector<uint8_t>, kChannels> lengths;
        std::array<std::vector<uint32_t>, kChannels> codes;
        std::vector<uint8_t> nibbles;
        for (size_t channel = 0; channel < lengths.size(); ++channel) {
            lengths[channel] = CodeLengths(counts[channel]);
            codes[channel] = CodeWords(lengths[channel]);
            nibbles.insert(nibbles.end(), lengths[channel].begin(), lengths[channel].end());
        }
        for (size_t i = 0; i < nibbles.size(); i += 2)
            bytes.push_back(static_cast<uint8_t>(nibbles[i] | nibbles[i + 1] << 4));
        BitWriter bits(bytes);
        for (const Token token : tokens) {
            if (token.channel == kBareBits) {
                bits.Write(token.value, token.bareCount);
            } else {
                bits.Write(codes[token.channel][token.value], lengths[token.channel][token.value]);
            }
        }
        return bytes;
    }

    std::vector<uint8_t> Header() const {
        std::vector<uint8_t> bytes = {'N', 'P', static_cast<uint8_t>(picture.scale),
                                      static_cast<uint8_t>(picture.hasAlpha)};
        for (const int number : {picture.size.cx, picture.size.cy, picture.frameRows, 0}) {
            bytes.push_back(static_cast<uint8_t>(number));
            bytes.push_back(static_cast<uint8_t>(number >> 8));
        }
        return bytes;
    }

    PackedPicture picture;
    std::vector<uint32_t> words;
    size_t width, height;
    std::vector<Token> tokens;
    std::array<std::vector<uint64_t>, kChannels> counts;
};

}  // namespace

std::vector<uint8_t> PackPicture(const PackedPicture& picture, std::vector<uint32_t> words) {
    return Packer(picture, std::move(words)).Pack();
}

}  // namespace norava
