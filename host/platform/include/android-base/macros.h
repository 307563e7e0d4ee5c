// The one macro that aidl's generated code takes from here.
#pragma once

#define UNLIKELY(exp) (__builtin_expect((exp) != 0, false))
