#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "tools/gridkit/host.h"

// The sub-commands. Each adds itself to the command line and, when the user asked for it, stores in
// `chosen` what is to be done: it writes its results to standard output and gives the exit status;
// what refuses its input is a gridkit::Error.
using Action = std::function<int(const Host&)>;

void add_formats(CLI::App& app, Action& chosen);
void add_info(CLI::App& app, Action& chosen);
void add_layers(CLI::App& app, Action& chosen);
void add_read(CLI::App& app, Action& chosen);
void add_quicklook(CLI::App& app, Action& chosen);
void add_data(CLI::App& app, Action& chosen);
void add_locate(CLI::App& app, Action& chosen);
void add_samples(CLI::App& app, Action& chosen);
void add_report(CLI::App& app, Action& chosen);

// What every sub-command says of its product.
inline constexpr const char* product_help = "The product: its annotation (.xml) or its folder";
