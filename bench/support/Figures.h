// Licence: MIT, see LICENSE.
// The figures of one program's run: the samples of every benchmark, and what comes of them for the
// comparisons.
#ifndef BENCH_SUPPORT_FIGURES_H
#define BENCH_SUPPORT_FIGURES_H

#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bench/support/Comparison.h"

namespace bench {

/// Samples of one quantity.
struct Figure {
  double median = 0;
  double spread = 0;  // half the distance of the quartiles, as a share of the median
};
Figure figureOf(std::vector<double> samples);

struct Row {
  const Comparison* comparison = nullptr;
  Figure ours;
  Figure peer;
  double ratio = 0;
  bool isMet = true;
};

/// Every benchmark's samples, by its name and by quantity: "" is seconds for one iteration, others
/// are counters.
class Figures final {
 public:
  void add(const std::string& benchmark, const std::string& quantity, double sample);

  /// What came of a comparison; nothing when a figure is missing.
  std::optional<Row> rowOf(const Comparison& comparison) const;

 private:
  std::optional<Figure> figure(const std::string& benchmark, const std::string& quantity) const;
  std::map<std::string, std::map<std::string, std::vector<double>>> samples;
};

/// One line a comparison, with a heading.
void printTable(std::ostream& out, std::string_view program, const std::vector<Row>& rows);
/// One JSON object.
void printJson(std::ostream& out, std::string_view program, const std::vector<Row>& rows);

/// The machine and the build, in one line.
std::string describeMachine();
/// Whether the program was built with optimisation.
bool isOptimised();

}  // namespace bench

#endif
