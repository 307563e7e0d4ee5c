// Lamp effects as pictures.
#pragma once

#include <string>

#include "tools/tarqctl/session.h"

namespace tarq::tools {

// Draws the effect of the file, or without one the effect that the board plays, into a moving GIF.
// Without a board the LEDs that the file names are drawn. What is left out and what the picture
// lacks is noticed. Throws a Failure when the driver does not take all of it.
void drawEffect(Session& session, const std::string& effectFile, const std::string& gifFile);

}  // namespace tarq::tools
