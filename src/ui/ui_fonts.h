#pragma once

// The fonts of the current Dear ImGui context: one per nominal size, all reading the same font file from one copy in
// memory. Glyphs are rasterised when they are first needed; a character that the file lacks comes from the system's
// fonts, which are looked for only then. Main thread only. The renderer must take textures that change
// (ImGuiBackendFlags_RendererHasTextures).

#include <span>
#include <string>

#include <imgui.h>

// `path` is UTF-8; empty or unusable: Dear ImGui's built-in font.
void fontsInitialize(const std::string& path, float scale);
void fontsShutdown();              // forgets everything; the fonts themselves go with the context
void fontsSetScale(float scale);   // every font that was handed out takes its new size at once
ImFont* fontAt(float nominalSize); // LegacySize is nominalSize × scale

// True for a TrueType or OpenType file with all the tables that are read, each of them inside the file. The rasteriser
// trusts what it is given, and a half-copied file must not bring the program down.
[[nodiscard]] bool isUsableFontFile(std::span<const unsigned char> file, int faceIndex = 0);
