#include "bench/ratio.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>

namespace bench {

namespace {

using json = nlohmann::ordered_json;

// A burst of another's work on the same machine lasts longer than a few repetitions, so that they
// are spread over rounds of work and yardstick in turns.
constexpr int rounds = 6;
constexpr int repetitions = 3;

// Keeps the shortest real time of each loop.
class Shortest : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      const double seconds = run.real_accumulated_time / static_cast<double>(run.iterations);
      const auto [found, is_new] = times_.try_emplace(run.run_name.function_name, seconds);
      if (!is_new) found->second = std::min(found->second, seconds);
    }
  }
  double of(const std::string& name) const {
    const auto found = times_.find(name);
    return found == times_.end() ? std::numeric_limits<double>::quiet_NaN() : found->second;
  }

 private:
  std::map<std::string, double> times_;
};

std::string work_name(std::size_t row) {
  return "work" + std::to_string(row);
}
std::string yardstick_name(std::size_t row) {
  return "yardstick" + std::to_string(row);
}

void add(const std::string& name, const std::function<void(benchmark::State&)>& loop) {
  benchmark::RegisterBenchmark(name.c_str(), loop)
      ->UseRealTime()
      ->Repetitions(repetitions)
      ->MinTime(0.05);
}

// The value of `--json FILE`, taken out of the arguments.
std::string take_json_argument(int& argc, char** argv) {
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::string(argv[i]) != "--json") continue;
    std::string file = argv[i + 1];
    std::move(argv + i + 2, argv + argc, argv + i);
    argc -= 2;
    return file;
  }
  return {};
}

json as_json(const Row& row, double work, double yardstick) {
  const bool is_speed = row.kind == Row::Goal::speed_at_least;
  const double ratio = is_speed ? yardstick / work : work / yardstick;
  json entry = {{"work", row.work},    {"yardstick", row.yardstick},
                {"ratio", ratio},      {"meaning", is_speed ? "times as fast" : "times its time"},
                {"workSeconds", work}, {"yardstickSeconds", yardstick}};
  if (row.goal > 0) {
    entry["goal"] = row.goal;
    entry["reached"] = is_speed ? ratio >= row.goal : ratio <= row.goal;
  }
  return entry;
}

json as_json(const Figure& figure) {
  json entry = {{"work", figure.work}, {"value", figure.value}, {"unit", figure.unit}};
  if (figure.at_most > 0) {
    entry["goal"] = figure.at_most;
    entry["reached"] = figure.value <= figure.at_most;
  }
  return entry;
}

void print(const json& entry) {
  const bool is_ratio = entry.contains("ratio");
  const double value = is_ratio ? entry["ratio"] : entry["value"];
  const std::string meaning = is_ratio ? entry["meaning"] : entry["unit"];
  std::printf("%-58s %10.3f %-16s", entry["work"].get<std::string>().c_str(), value,
              meaning.c_str());
  if (entry.contains("goal")) {
    std::printf(" goal %-7g %s", entry["goal"].get<double>(),
                entry["reached"].get<bool>() ? "reached" : "MISSED");
  }
  std::printf("\n");
  if (is_ratio) std::printf("  beside: %s\n", entry["yardstick"].get<std::string>().c_str());
}

}  // namespace

int run(int argc, char** argv, std::vector<Row> rows,
        const std::function<std::vector<Figure>()>& figures) try {
  const std::string file = take_json_argument(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::SetDefaultTimeUnit(benchmark::kMillisecond);
  Shortest reporter;
  json table = json::array();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].check) rows[i].check();
    benchmark::ClearRegisteredBenchmarks();
    add(work_name(i), rows[i].timed_work);
    add(yardstick_name(i), rows[i].timed_yardstick);
    for (int round = 0; round < rounds; ++round) benchmark::RunSpecifiedBenchmarks(&reporter);
    table.push_back(as_json(rows[i], reporter.of(work_name(i)), reporter.of(yardstick_name(i))));
    print(table.back());
  }
  if (figures) {
    for (const Figure& figure : figures()) {
      table.push_back(as_json(figure));
      print(table.back());
    }
  }
  if (!file.empty() && !(std::ofstream(file) << table.dump(2) << '\n')) {
    throw std::runtime_error(file + ": cannot be written");
  }
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "bench: %s\n", error.what());
  return 1;
}

}  // namespace bench
