#include "toolkit/priority_solver.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace obolo {
namespace {

// Coefficients below this count as zero; layout coefficients are ±1, ±½ and
// the constraints' multipliers.
constexpr double kZero = 1e-9;
// How far a value may miss a relation and still count as meeting it: far
// below anything a point-rounded frame shows.
constexpr double kTolerance = 1e-6;

// Equations kept in row echelon form as they arrive: each new one is reduced
// by the ones before it and either becomes a row of its own (with a pivot
// variable no earlier row has), turns out to follow from them, or contradicts
// them.
class Elimination {
 public:
  explicit Elimination(std::size_t width) : width_(width) {}

  // False when the equation contradicts the rows kept so far (it is not kept).
  bool add(const std::vector<double>& coefficients, double constant) {
    Row row{coefficients, constant, 0};
    for (const Row& kept : rows_) {
      const double factor = row.a[kept.pivot];
      if (std::abs(factor) <= kZero) continue;
      const double scale = factor / kept.a[kept.pivot];
      for (std::size_t j = 0; j < width_; ++j) row.a[j] -= scale * kept.a[j];
      row.b -= scale * kept.b;
      row.a[kept.pivot] = 0;
    }
    std::size_t pivot = 0;
    double largest = 0;
    for (std::size_t j = 0; j < width_; ++j) {
      if (std::abs(row.a[j]) > largest) {
        largest = std::abs(row.a[j]);
        pivot = j;
      }
    }
    if (largest <= kZero) return std::abs(row.b) <= kTolerance * std::max(1.0, std::abs(constant));
    row.pivot = pivot;
    rows_.push_back(std::move(row));
    return true;
  }

  // Back substitution; variables that are no row's pivot keep `values`.
  void solveInto(std::vector<double>& values) const {
    for (auto row = rows_.rbegin(); row != rows_.rend(); ++row) {
      double sum = row->b;
      for (std::size_t j = 0; j < width_; ++j) {
        if (j != row->pivot) sum -= row->a[j] * values[j];
      }
      values[row->pivot] = sum / row->a[row->pivot];
    }
  }

 private:
  struct Row {
    std::vector<double> a;
    double b;
    std::size_t pivot;
  };
  std::size_t width_;
  std::vector<Row> rows_;
};

}  // namespace

std::size_t PrioritySolver::add(std::vector<Term> terms, Relation relation, double constant, float priority) {
  std::erase_if(terms, [this](const Term& term) { return term.variable >= variable_count_; });
  rules_.push_back(Rule{std::move(terms), relation, constant, priority});
  return rules_.size() - 1;
}

bool PrioritySolver::breaks(const Rule& rule, const std::vector<double>& values) const {
  double sum = 0;
  for (const Term& term : rule.terms) sum += term.coefficient * values[term.variable];
  const double slack = kTolerance * std::max(1.0, std::abs(rule.constant));
  switch (rule.relation) {
    case Relation::lessThanOrEqual:
      return sum > rule.constant + slack;
    case Relation::greaterThanOrEqual:
      return sum < rule.constant - slack;
    case Relation::equal:
      return std::abs(sum - rule.constant) > slack;
  }
  return false;
}

std::vector<double> PrioritySolver::solve(const std::vector<double>& fallback) {
  std::vector<double> start(variable_count_, 0.0);
  std::copy_n(fallback.begin(), std::min(fallback.size(), variable_count_), start.begin());

  std::vector<std::size_t> order(rules_.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(),
                   [this](std::size_t a, std::size_t b) { return rules_[a].priority > rules_[b].priority; });

  std::vector<bool> joined(rules_.size(), false);
  for (std::size_t i = 0; i < rules_.size(); ++i) joined[i] = rules_[i].relation == Relation::equal;

  std::vector<double> values;
  // Each round adds at least one inequality, so there are at most as many
  // rounds as inequalities, plus the first.
  for (std::size_t round = 0; round <= rules_.size(); ++round) {
    Elimination elimination(variable_count_);
    dropped_.clear();
    std::vector<double> coefficients(variable_count_);
    for (std::size_t index : order) {
      if (!joined[index]) continue;
      std::fill(coefficients.begin(), coefficients.end(), 0.0);
      for (const Term& term : rules_[index].terms) coefficients[term.variable] += term.coefficient;
      if (!elimination.add(coefficients, rules_[index].constant)) dropped_.push_back(index);
    }
    // The fallbacks, last: they decide only what nothing else did.
    for (std::size_t v = 0; v < variable_count_; ++v) {
      std::fill(coefficients.begin(), coefficients.end(), 0.0);
      coefficients[v] = 1;
      elimination.add(coefficients, start[v]);
    }
    values = start;
    elimination.solveInto(values);

    bool more = false;
    for (std::size_t i = 0; i < rules_.size(); ++i) {
      if (!joined[i] && breaks(rules_[i], values)) {
        joined[i] = true;
        more = true;
      }
    }
    if (!more) break;
  }
  // An inequality that joined and was dropped is reported; so is one that
  // still breaks because a more important relation won.
  for (std::size_t i = 0; i < rules_.size(); ++i) {
    if (rules_[i].relation != Relation::equal && breaks(rules_[i], values) &&
        std::find(dropped_.begin(), dropped_.end(), i) == dropped_.end()) {
      dropped_.push_back(i);
    }
  }
  return values;
}

}  // namespace obolo
