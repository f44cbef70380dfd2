// Maidenhead grid locator conversions.
#pragma once

namespace lunaquill {

// Locator (4 or 6 characters, either case) to the centre of its square or
// subsquare. Returns 0 on success, 1 when the text is not a locator (field
// letters A-R, square digits, subsquare letters A-X; a fifth letter without
// a sixth is ignored); the outputs are left unchanged on failure. Reads at
// most 6 characters.
int GridToLatLong(const char *grid, double &latitude, double &longitude);

// Position to a six-character locator ("FN42mm") in buffer7 (7 bytes with
// the NUL). Returns 0, or 1 when the longitude lies outside +-180. The
// latitude is not checked. Longitude 180 or latitude 90 give the field
// letter S, which GridToLatLong refuses.
int LatLongToGrid(char *buffer7, double latitude, double longitude);

} // namespace lunaquill
