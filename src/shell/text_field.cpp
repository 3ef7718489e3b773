#include "shell/text_field.h"

#include <algorithm>
#include <string>

#include <imgui_internal.h>

#include "ui/ui_palette.h"
#include "ui/ui_theme.h"

namespace {

struct EditedText {
    std::string text;
    std::size_t limit; // in bytes
};

// Handles the events of a text field. A paste may make the text longer than the limit. In that case this function
// removes the surplus before the caret, which is at the end of the pasted text.
int onTextEvent(ImGuiInputTextCallbackData* data) {
    EditedText& edited = *static_cast<EditedText*>(data->UserData);
    const auto length = static_cast<std::size_t>(data->BufTextLen);
    if (data->EventFlag == ImGuiInputTextFlags_CallbackResize) {
        edited.text.resize(length);
        data->Buf = edited.text.data();
    } else if (length > edited.limit) {
        const auto caret = static_cast<std::size_t>(data->CursorPos);
        const std::size_t surplus = std::min(length - edited.limit, caret);
        const std::size_t keep = wholeCharacters({data->Buf, caret}, caret - surplus);
        data->DeleteChars(static_cast<int>(keep), static_cast<int>(caret - keep));
    }
    return 0;
}

// Moves the caret to the right by one pixel, because Dear ImGui 1.92 draws it on the last pixel of the letter before
// it. A caret at the start of the field does not move.
void moveCaretOffLetter(ImDrawList& drawList, int firstVertex) {
    const float start = ImGui::GetItemRectMin().x + ImGui::GetStyle().FramePadding.x;
    for (int i = firstVertex; i < drawList.VtxBuffer.Size; ++i) {
        ImDrawVert& corner = drawList.VtxBuffer[i];
        if (corner.col == palette::kCaret && corner.pos.x > start + uiThemePx(2.0f)) corner.pos.x += uiThemePx(1.0f);
    }
}

} // namespace

std::size_t wholeCharacters(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) return text.size();
    while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0u) == 0x80u) // `limit` is inside a character
        --limit;
    return limit;
}

bool drawTextField(const char* label, const char* hint, char* buffer, std::size_t size) {
    EditedText edited = {buffer, size - 1};
    ImDrawList& drawList = *ImGui::GetWindowDrawList();
    const int firstVertex = drawList.VtxBuffer.Size;
    const bool changed = ImGui::InputTextWithHint(label, hint, edited.text.data(), edited.text.capacity() + 1,
                                                  ImGuiInputTextFlags_CallbackResize | ImGuiInputTextFlags_CallbackEdit,
                                                  onTextEvent, &edited);
    moveCaretOffLetter(drawList, firstVertex);
    if (changed) buffer[edited.text.copy(buffer, wholeCharacters(edited.text, size - 1))] = '\0';
    return changed;
}

// Does not use ImGui::SetKeyboardFocusHere: Dear ImGui 1.92 ignores it in a frame in which the mouse is pressed on the
// window outside the field.
void activateTextField(ImGuiID id, bool keepCaret) {
    ImGui::ActivateItemByID(id);
    ImGui::GetCurrentContext()->NavNextActivateFlags =
        ImGuiActivateFlags_PreferInput | (keepCaret ? ImGuiActivateFlags_TryToPreserveState : 0);
}
