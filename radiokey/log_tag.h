// The tag of the service's log lines.
#pragma once

constexpr char kLogTag[] = "RadioKeyService";
