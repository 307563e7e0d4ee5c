// Asks the camera's sub-devices for the sensor that is fitted.
#pragma once

#include <string>

// Sets name to what the first of /dev/v4l-subdev0 to 9 that answers says, which may be nothing at
// all. False, and name as it was, when none answers. Logs nothing. Any thread.
bool getInternalCameraInfo(std::string& name);
