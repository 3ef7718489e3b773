#pragma once

// The fonts of the current Dear ImGui context, one for each unscaled ("nominal") size. All share one copy of the font
// file in memory. A glyph is rasterised when it is first needed. If the font file has no glyph for a character, a
// system font that has one is used. Main thread only. The renderer must support texture updates
// (ImGuiBackendFlags_RendererHasTextures).

#include <span>
#include <string>

#include <imgui.h>

// Reads the font file. `path` is UTF-8. If it is empty or the file is unusable, Dear ImGui's built-in font is used.
void fontsInitialize(const std::string& path, float scale);
void fontsShutdown();                            // does not destroy the fonts: the context's atlas owns them
void fontsSetScale(float scale);                 // at once resizes all fonts that fontAt has returned
[[nodiscard]] ImFont* fontAt(float nominalSize); // the font's LegacySize is nominalSize × scale

// True if the file is TrueType or OpenType and contains all tables that the rasteriser reads, none of them truncated.
// stb_truetype does not check bounds, so a truncated table could crash the program.
[[nodiscard]] bool isUsableFontFile(std::span<const unsigned char> file, int faceIndex = 0);
