#include "tools/tarqctl/hardware_list.h"

#include <com/tarq/hardwareInfo/IHardwareInfoService.h>

namespace tarq::tools {

using com::tarq::hardwareInfo::IHardwareInfoService;

std::vector<std::string> hardwareList(const Daemon& daemon) {
    std::vector<android::String16> items;
    bool always = false;  // the answer's own result is true whatever happened
    daemon.expectOk(daemon.service<IHardwareInfoService>()->getHardwareInfo(&items, &always));
    std::vector<std::string> texts;
    for (const android::String16& item : items) texts.emplace_back(android::String8(item));
    return texts;
}

}  // namespace tarq::tools
