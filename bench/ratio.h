#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

namespace bench {

// One row of the table: a piece of work, timed beside its yardstick in the same run. Machines are
// shared and noisy, so only the ratio means anything.
struct Row {
  std::string work;
  std::string yardstick;

  // How the goal reads: the work's time as a multiple of the yardstick's, at most; or how many
  // times as fast as the yardstick the work is, at least. 0 for a row without a goal.
  enum class Goal { time_at_most, speed_at_least } kind = Goal::time_at_most;
  double goal = 0;

  // Compares the work's answer with a reference and throws where they differ. Runs before any
  // timing.
  std::function<void()> check;

  // The timed loops: `for (auto _ : state) ...`. Real time counts.
  std::function<void(benchmark::State&)> timed_work;
  std::function<void(benchmark::State&)> timed_yardstick;
};

// A figure that is no time: bytes read, memory. It stands in the table as it is told.
struct Figure {
  std::string work;
  std::string unit;
  double value = 0;
  double at_most = 0;  // the goal; 0 for none
};

// Checks, times and prints all rows and figures as a table on standard output, and writes them to
// the file that `--json FILE` names. Of each loop the shortest of the repetitions counts, taken in
// turns with its yardstick's. 0, or 1 when an answer is wrong; a missed goal is told in its row and
// is no failure. The other arguments are Google Benchmark's.
int run(int argc, char** argv, std::vector<Row> rows,
        const std::function<std::vector<Figure>()>& figures = {});

}  // namespace bench
