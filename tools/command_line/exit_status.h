#pragma once

// How the three programs end.
enum ExitStatus : int {
  exit_done = 0,
  exit_refused = 1,    // the input was refused: standard error says what is wrong, and where
  exit_wrong_use = 2,  // what the command line alone tells to be wrong
  exit_no_data = 3,    // of `gridkit read --raw` only: the plug-in has no data for the block
};
