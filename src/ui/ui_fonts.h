#pragma once

// The fonts of the current Dear ImGui context: one per nominal size, all from one copy of the font file in memory. A
// glyph is rasterised when it is first needed. A character that the file lacks comes from the system's fonts, which are
// searched only then. Main thread only. The renderer must support texture updates
// (ImGuiBackendFlags_RendererHasTextures).

#include <span>
#include <string>

#include <imgui.h>

// `path` is UTF-8. An empty path or an unusable file gives Dear ImGui's built-in font.
void fontsInitialize(const std::string& path, float scale);
void fontsShutdown();                            // the context's atlas destroys the fonts themselves
void fontsSetScale(float scale);                 // resizes every font that fontAt has returned, at once
[[nodiscard]] ImFont* fontAt(float nominalSize); // LegacySize is nominalSize × scale

// True for a TrueType or OpenType file that has all the tables that the rasteriser reads, each inside the file.
// stb_truetype does not check bounds, so a truncated file could crash the program.
[[nodiscard]] bool isUsableFontFile(std::span<const unsigned char> file, int faceIndex = 0);
