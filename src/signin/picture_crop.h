#pragma once

// Which part of a picture fills a panel without distortion. Aspects are width over height.

struct PictureCrop {
    float left = 0.0f, top = 0.0f, right = 1.0f, bottom = 1.0f; // texture coordinates
};

// A picture that is too tall loses the same at top and bottom; one that is too wide keeps its right part, up to 0.82 of
// its width. A panel or a picture without an area keeps everything.
PictureCrop cropPicture(float panelWidth, float panelHeight, float pictureWidth, float pictureHeight);
