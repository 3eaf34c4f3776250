#pragma once

// The types of the runtime that operations of the annotation classes take and give: a library that
// exports the classes exports these with them.
#define LMX_API __attribute__((visibility("default")))
