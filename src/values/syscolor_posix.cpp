// System colours on POSIX systems: there is no desktop-wide colour scheme to ask, so the slots
// answer from a fixed table of the usual light scheme.
#include "values/syscolor.h"

namespace ZkCommonNS {

namespace {

// Stored as 0xRRGGBB for reading; handed out swapped, as a platform call would answer.
constexpr uint32_t kSystemColorsRGB[detail::kSystemColorCount] = {
    0xC8C8C8, // scrollbar
    0x000000, // background (desktop)
    0x99B4D1, // activecaption
    0xBFCDDB, // inactivecaption
    0xF0F0F0, // menu
    0xFFFFFF, // window
    0x646464, // windowframe
    0x000000, // menutext
    0x000000, // windowtext
    0x000000, // captiontext
    0xB4B4B4, // activeborder
    0xF4F7FC, // inactiveborder
    0xABABAB, // appworkspace
    0x0078D7, // highlight
    0xFFFFFF, // highlighttext
    0xF0F0F0, // buttonface, threedface
    0xA0A0A0, // buttonshadow, threedshadow
    0x6D6D6D, // graytext
    0x000000, // buttontext
    0x000000, // inactivecaptiontext
    0xFFFFFF, // buttonhighlight, threedhighlight
    0x696969, // threeddarkshadow
    0xE3E3E3, // threedlightshadow
    0x000000, // infotext
    0xFFFFE1, // infobackground
};

} // namespace

uint32_t detail::getSystemColorBGR(int index) noexcept {
    if (index < 0 || index >= kSystemColorCount)
        return 0;
    uint32_t rgb = kSystemColorsRGB[index];
    return ((rgb & 0xFF) << 16) | (rgb & 0xFF00) | ((rgb >> 16) & 0xFF);
}

} // namespace ZkCommonNS
