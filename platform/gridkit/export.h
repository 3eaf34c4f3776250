#pragma once

// What the shared library offers: everything else in it is hidden.
#define GRIDKIT_API __attribute__((visibility("default")))
