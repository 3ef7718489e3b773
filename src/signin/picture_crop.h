#pragma once

// Computes the part of a picture that fills a panel without distortion. Any thread.

struct PictureCrop {
    float left = 0.0f, top = 0.0f, right = 1.0f, bottom = 1.0f; // texture coordinates
};

// Returns the visible part. A picture that is too tall loses equal parts at its top and bottom. If the picture is too
// wide, the visible part ends at 0.82 of the picture's width, or at its right edge if more than 0.82 is visible. If a
// size is 0 or less, the whole picture is visible.
[[nodiscard]] PictureCrop cropPicture(float panelWidth, float panelHeight, float pictureWidth, float pictureHeight);
