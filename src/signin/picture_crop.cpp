#include "signin/picture_crop.h"

#include <algorithm>

PictureCrop cropPicture(float panelWidth, float panelHeight, float pictureWidth, float pictureHeight) {
    constexpr float kRightEnd = 0.82f;
    PictureCrop crop;
    if (panelWidth <= 0.0f || panelHeight <= 0.0f || pictureWidth <= 0.0f || pictureHeight <= 0.0f) return crop;
    const float panel = panelWidth / panelHeight, picture = pictureWidth / pictureHeight;
    if (panel > picture) {
        crop.top = (1.0f - picture / panel) * 0.5f;
        crop.bottom = 1.0f - crop.top;
    } else {
        const float visible = panel / picture;
        crop.left = std::max((visible <= kRightEnd ? kRightEnd : 1.0f) - visible, 0.0f);
        crop.right = crop.left + visible;
    }
    return crop;
}
