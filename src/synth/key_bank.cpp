#include "synth/key_bank.h"

namespace norava {

KeyBank::KeyBank(SoundSettings& sound) : sound_(sound) {
    std::size_t bytes = 0;
    for (int k = 0; k < kNumKeys; ++k)
        bytes += CNoravaKey::bytesFor(kFirstKeyNote + k);
    LineMemory lines(bytes);
    for (int k = 0; k < kNumKeys; ++k) {
        const auto i = static_cast<std::size_t>(k);
        pointers_[i] = &keys_[i].emplace(kFirstKeyNote + k, sound, lines);
    }
}

void KeyBank::Reset() {
    for (CNoravaKey* const key : pointers_)
        key->reset();
}

CNoravaKey* KeyBank::Find(int note) {
    const int key = note - kFirstKeyNote;
    return key >= 0 && key < kNumKeys ? pointers_[static_cast<std::size_t>(key)] : nullptr;
}

void KeyBank::Start(int note, float velocity) {
    if (CNoravaKey* const key = Find(note)) key->start(velocity);
}

void KeyBank::Release(int note) {
    if (CNoravaKey* const key = Find(note)) key->release();
}

bool KeyBank::Render(float* left, float* right, int count, float* peak1, float* peak2) {
    if (!IsAnySounding()) return false;
    processKeys(sound_, left, right, count, pointers_.data(), peak1, peak2);
    // Notes end at the start of a control block, before anything is stored for them.
    return IsAnySounding();
}

}  // namespace norava
