// The arithmetic under the layout pass: values that satisfy linear relations
// between them, the more important relations first.
//
// Each relation says sum(coefficient × value) {≤, =, ≥} constant and has a
// priority. Relations are honoured in order of priority (higher first; equal
// priorities in the order they were added): a relation that contradicts the
// ones already honoured is dropped, the way the platform breaks a layout
// constraint that cannot hold. Every value no relation decides takes its
// fallback value, so the result is always complete and deterministic.
//
// Inequalities are handled by an active set: they start out ignored, and every
// one that the values of a round break joins the next round as an equality
// (at its own priority), until a round breaks none that was not already
// tried. All inequalities a round breaks join together, which keeps the
// rounds few; an inequality that joins needlessly only pins a value that a
// lower priority (at worst the fallback) would otherwise have chosen.
//
// This is not a general constraint solver: it serves the few dozen relations
// of one screen's layout, on one thread, with the kinds of relation the
// toolkit's constraints make (edges, sizes, centres, chains).

#ifndef OBOLO_TOOLKIT_PRIORITY_SOLVER_H_
#define OBOLO_TOOLKIT_PRIORITY_SOLVER_H_

#include <cstddef>
#include <vector>

namespace obolo {

class PrioritySolver {
 public:
  enum class Relation { lessThanOrEqual, equal, greaterThanOrEqual };

  struct Term {
    std::size_t variable;
    double coefficient;
  };

  explicit PrioritySolver(std::size_t variableCount) : variable_count_(variableCount) {}

  // Adds a relation; returns its index, which dropped() reports. Terms that
  // name a variable out of range are ignored.
  std::size_t add(std::vector<Term> terms, Relation relation, double constant, float priority);

  // Solves. `fallback` has one value per variable (missing ones count as 0).
  std::vector<double> solve(const std::vector<double>& fallback);

  // The relations the last solve() could not honour, by index.
  const std::vector<std::size_t>& dropped() const { return dropped_; }

 private:
  struct Rule {
    std::vector<Term> terms;
    Relation relation;
    double constant;
    float priority;
  };

  bool breaks(const Rule& rule, const std::vector<double>& values) const;

  std::size_t variable_count_;
  std::vector<Rule> rules_;
  std::vector<std::size_t> dropped_;
};

}  // namespace obolo

#endif  // OBOLO_TOOLKIT_PRIORITY_SOLVER_H_
