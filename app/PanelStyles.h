// The style sheets of the window's panels. Their colour carries meaning:
// green the source is seen (or home data), red not seen (or DX data), blue a
// control that opens a choice or is active, grey an idle control.
#pragma once

namespace lunaquill {

inline constexpr const char *kLightGrayStyle =
    "background-color: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 black, stop:0.9 LightGray, stop:1 white); color:white; border-radius:5px;";
inline constexpr const char *kDarkGreenStyle =
    "background-color: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 black, stop:0.9 DarkGreen, stop:1 white); color:white; border-radius:5px;";
inline constexpr const char *kDarkRedStyle =
    "background-color: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 black, stop:0.9 DarkRed, stop:1 white); color:white; border-radius:5px;";
inline constexpr const char *kDarkBlueStyle =
    "background-color: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 black, stop:0.9 DarkBlue, stop:1 white); color:white; border-radius:5px;";
inline constexpr const char *kGrayStyle =
    "background-color: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 black, stop:0.9 Gray, stop:1 white); color:white; border-radius:5px;";
inline constexpr const char *kPlainBlackStyle = "background-color: black; color:white; border-radius:5px;";

} // namespace lunaquill
