// Licence: MIT, see LICENSE.
#include "bench/support/Figures.h"

#include <sys/utsname.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <ostream>
#include <thread>

namespace bench {

namespace {

double quantile(const std::vector<double>& sorted, double share) {
  const double at = share * static_cast<double>(sorted.size() - 1);
  const auto below = static_cast<std::size_t>(at);
  const std::size_t above = std::min(below + 1, sorted.size() - 1);
  const double part = at - static_cast<double>(below);
  return sorted[below] * (1 - part) + sorted[above] * part;
}

template <typename... Values>
std::string printed(const char* format, Values... values) {
  std::array<char, 160> text{};
  static_cast<void>(std::snprintf(text.data(), text.size(), format, values...));
  return text.data();
}

std::string timeText(double seconds) {
  if (seconds < 1e-6) return printed("%.1f ns", seconds * 1e9);
  if (seconds < 1e-3) return printed("%.2f us", seconds * 1e6);
  return printed("%.2f ms", seconds * 1e3);
}

std::string valueText(const Goal& goal, const Figure& figure) {
  const std::string value =
      goal.of == Goal::Of::kTime ? timeText(figure.median) : printed("%.4g", figure.median);
  return value + printed(" ~%.0f%%", figure.spread * 100);
}

std::string goalText(const Goal& goal) {
  switch (goal.wanted) {
    case Goal::Wanted::kAtMost:
      return printed("<= %.2f", goal.ratio);
    case Goal::Wanted::kAtLeast:
      return printed(">= %.2f", goal.ratio);
    case Goal::Wanted::kNothing:
      break;
  }
  return "";
}

const char* verdictOf(const Row& row) {
  if (row.comparison->goal.wanted == Goal::Wanted::kNothing) return "";
  return row.isMet ? "met" : "MISSED";
}

bool meets(const Goal& goal, double ratio) {
  switch (goal.wanted) {
    case Goal::Wanted::kAtMost:
      return ratio <= goal.ratio;
    case Goal::Wanted::kAtLeast:
      return ratio >= goal.ratio;
    case Goal::Wanted::kNothing:
      break;
  }
  return true;
}

std::string processorName() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  }
  return "unknown processor";
}

}  // namespace

Figure figureOf(std::vector<double> samples) {
  if (samples.empty()) return {};
  std::ranges::sort(samples);
  const double median = quantile(samples, 0.5);
  const double half = (quantile(samples, 0.75) - quantile(samples, 0.25)) / 2;
  return {median, median == 0 ? 0 : half / median};
}

void Figures::add(const std::string& benchmark, const std::string& quantity, double sample) {
  samples[benchmark][quantity].push_back(sample);
}

std::optional<Figure> Figures::figure(const std::string& benchmark,
                                      const std::string& quantity) const {
  const auto quantities = samples.find(benchmark);
  if (quantities == samples.end()) return std::nullopt;
  const auto found = quantities->second.find(quantity);
  if (found == quantities->second.end()) return std::nullopt;
  return figureOf(found->second);
}

std::optional<Row> Figures::rowOf(const Comparison& comparison) const {
  const Goal& goal = comparison.goal;
  const std::optional<Figure> ours = figure(comparison.ours, goal.counter);
  const std::optional<Figure> peer = figure(comparison.peer, goal.counter);
  if (!ours || !peer || ours->median <= 0 || peer->median <= 0) return std::nullopt;
  const double ratio = goal.peerByOurs ? peer->median / ours->median : ours->median / peer->median;
  return Row{&comparison, *ours, *peer, ratio, meets(goal, ratio)};
}

void printTable(std::ostream& out, std::string_view program, const std::vector<Row>& rows) {
  out << program << ": medians, with half the distance of the quartiles\n";
  out << printed("%-58s %16s %16s %7s %8s\n", "what", "ours", "peer", "ratio", "goal");
  for (const Row& row : rows) {
    const Comparison& comparison = *row.comparison;
    const std::string figures =
        printed(" %16s %16s %7.2f %8s %s", valueText(comparison.goal, row.ours).c_str(),
                valueText(comparison.goal, row.peer).c_str(), row.ratio,
                goalText(comparison.goal).c_str(), verdictOf(row));
    out << printed("%-58s", comparison.what.c_str()) << figures << '\n';
  }
}

void printJson(std::ostream& out, std::string_view program, const std::vector<Row>& rows) {
  nlohmann::ordered_json comparisons = nlohmann::ordered_json::array();
  for (const Row& row : rows) {
    const Goal& goal = row.comparison->goal;
    nlohmann::ordered_json entry = {
        {"what", row.comparison->what},
        {"quantity", goal.of == Goal::Of::kTime ? "seconds" : goal.counter},
        {"ours", {{"name", row.comparison->ours}, {"median", row.ours.median}}},
        {"peer", {{"name", row.comparison->peer}, {"median", row.peer.median}}},
        {"ratio", row.ratio}};
    entry["ours"]["spread"] = row.ours.spread;
    entry["peer"]["spread"] = row.peer.spread;
    if (goal.wanted != Goal::Wanted::kNothing) {
      entry["goal"] = goalText(goal);
      entry["met"] = row.isMet;
    }
    comparisons.push_back(std::move(entry));
  }
  const nlohmann::ordered_json document = {{"program", program},
                                           {"machine", describeMachine()},
                                           {"optimised", isOptimised()},
                                           {"comparisons", comparisons}};
  out << document.dump(2) << '\n';
}

std::string describeMachine() {
  utsname host{};
  uname(&host);
  return processorName() + ", " + std::to_string(std::thread::hardware_concurrency()) +
         " processors, " + host.sysname + " " + host.release + ", " + host.machine;
}

bool isOptimised() {
#ifdef __OPTIMIZE__
  return true;
#else
  return false;
#endif
}

}  // namespace bench
