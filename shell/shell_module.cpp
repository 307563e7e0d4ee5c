#include "shell/shell_module.h"

#include "shell/ShellService.h"

int32_t shell_module() {
    com::tarq::shell::ShellService::instantiate();
    return 0;
}
