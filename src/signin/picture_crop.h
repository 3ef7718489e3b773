#pragma once

// Computes the part of a picture that fills a panel without distortion. Any thread.

struct PictureCrop {
    float left = 0.0f, top = 0.0f, right = 1.0f, bottom = 1.0f; // texture coordinates
};

// A picture that is too tall is cut equally at top and bottom. One that is too wide keeps the part that ends at 0.82 of
// its width, or its right end when more than 0.82 is visible. Without an area of panel or picture nothing is cut.
[[nodiscard]] PictureCrop cropPicture(float panelWidth, float panelHeight, float pictureWidth, float pictureHeight);
