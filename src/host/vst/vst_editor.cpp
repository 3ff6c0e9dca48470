#include "host/vst/vst_editor.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace norava {

namespace {

vst::i16 Pixels(int length) {
    return static_cast<vst::i16>(
        std::clamp(length, 0, static_cast<int>(std::numeric_limits<vst::i16>::max())));
}

EditorKey Key(int character, int virtualKey, float modifiers) {
    // Four bits travel as a float; anything else a host may send is none of them.
    const bool valid = modifiers >= 0.0f && modifiers < 16.0f;
    return {character, virtualKey, valid ? static_cast<unsigned>(modifiers) : 0u};
}

}  // namespace

CVSTEditor::CVSTEditor(std::unique_ptr<CPluginEditorInterface> editor)
    : pluginEditor(std::move(editor)) {}

CVSTEditor::~CVSTEditor() = default;

bool CVSTEditor::getRect(vst::ERect** target) noexcept {
    if (target == nullptr) return false;
    const EditorSize size = pluginEditor->GetEditorSize();
    rect = {0, 0, Pixels(size.height), Pixels(size.width)};
    *target = &rect;
    return true;
}

bool CVSTEditor::open(void* parent) {
    close();  // a host that opens twice moves the panel into its new window
    return pluginEditor->CanOpenEditor() && pluginEditor->OpenEditor(parent);
}

void CVSTEditor::close() {
    if (pluginEditor->IsEditorOpen()) pluginEditor->CloseEditor();
}

void CVSTEditor::idle() {
    if (pluginEditor->IsEditorOpen()) pluginEditor->IdleEditor();
}

bool CVSTEditor::onKeyDown(int character, int virtualKey, float modifiers) {
    return pluginEditor->IsEditorOpen() &&
           pluginEditor->EditorKeyDown(Key(character, virtualKey, modifiers));
}

bool CVSTEditor::onKeyUp(int character, int virtualKey, float modifiers) {
    return pluginEditor->IsEditorOpen() &&
           pluginEditor->EditorKeyUp(Key(character, virtualKey, modifiers));
}

}  // namespace norava
