// Lamp effects as files and as pictures.
#pragma once

#include <string>
#include <vector>

#include "rgbleds/effect_file.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

// What the daemon's reader makes of the file, a path of the device or any other. Throws a Failure
// with the hint when it cannot be read: the daemon would send nothing then.
std::vector<EffectItem> effectItems(const Session& session, const std::string& file,
                                    const std::string& hint);

// Whether the item is sent to the driver; and what is left out when it is not.
bool isSent(const EffectItem& item);
std::string leftOutText(const EffectItem& item);

// Draws the effect of the file, or without one the effect that the board plays, into a moving GIF.
// Items that are left out are noticed. Throws a Failure for one that the driver does not take.
void drawEffect(const Session& session, const std::string& effectFile, const std::string& gifFile);

}  // namespace tarq::tools
