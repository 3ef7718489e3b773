#pragma once

// Draws text fields that edit UTF-8 text in buffers of fixed size, and copies text into such buffers. A text that is
// too long is cut between two characters.

#include <cstddef>
#include <string_view>

// Returns the length in bytes of the longest prefix of `text` that has at most `limit` bytes and ends with a whole
// character.
[[nodiscard]] std::size_t wholeCharacters(std::string_view text, std::size_t limit);

// Copies a text into a buffer and cuts it to fit.
template<std::size_t size>
void copyToBuffer(std::string_view text, char (&buffer)[size]) {
    buffer[text.copy(buffer, wholeCharacters(text, size - 1))] = '\0';
}

// Draws ImGui::InputTextWithHint for a buffer of `size` bytes. Cuts a pasted text to fit; Dear ImGui 1.92 itself would
// insert nothing if the whole text does not fit. True in the frame of a change. Main thread only, inside a frame.
bool drawTextField(const char* label, const char* hint, char* buffer, std::size_t size);

// Makes a text field active in the next frame and selects its text. With `keepCaret` it selects nothing, and the caret
// stays where it was.
void activateTextField(unsigned int id, bool keepCaret = false);
