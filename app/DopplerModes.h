// The radio's Doppler modes in one table: the value stored under DopplerMode
// is the index, the Station Control dialog lists the names in this order and
// shows the explanation of the chosen one. f is the operating frequency.
#pragma once

#include <cstdint>

namespace lunaquill {

enum DopplerMode : int32_t {
    DopplerOff = 0,
    DopplerOwnEcho = 1,
    DopplerDx = 2,
    DopplerConstantOnMoon = 3,
    DopplerFullToDx = 4,
    DopplerModeCount
};

struct DopplerModeText {
    const char *name;
    const char *explanation;
};

inline constexpr DopplerModeText kDopplerModes[DopplerModeCount] = {
    {"Off", "The radio is not tuned: it stays where it is."},
    {"Own echo",
     "Hear your own echoes: receive on f + your echo Doppler, transmit on f."},
    {"DX",
     "Hear a DX station that transmits on f: receive on f + the mutual Doppler while both "
     "stations see the Moon, transmit on f (the DX station corrects its own receive)."},
    {"Constant frequency on the Moon",
     "Nets, random contacts, microwaves: receive on f + half your echo Doppler, transmit on "
     "f - half, so everyone doing the same meets on f at the Moon."},
    {"Full Doppler to DX",
     "Work a DX station that corrects nothing: receive on f + the mutual Doppler, transmit on "
     "f - the mutual Doppler, so it hears you on f; only while both stations see the Moon."},
};

} // namespace lunaquill
