// Asks the camera's sub-devices for the sensor that is fitted.
#pragma once

#include <string>

// Sets name to what the first of /dev/v4l-subdev0 to 9 that answers says, which may be nothing at
// all. The nodes behind it are not asked: with two cameras the lower number decides. A node that is
// missing, cannot be opened or refuses the request is passed over. False, and name as it was, when
// none answers. Logs nothing, so a caller says what came of it. Any thread.
bool getInternalCameraInfo(std::string& name);
