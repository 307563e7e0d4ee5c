#include "shell/shell_module.h"

#include "shell/ShellService.h"

// Only the uniform start of a module; the service registers itself.
int32_t shell_module() {
    com::tarq::shell::ShellService::instantiate();
    return 0;
}
