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

// A sparse linear combination of variables, sorted by variable.
using Sparse = std::vector<PrioritySolver::Term>;

double CoefficientOf(const Sparse& terms, std::size_t variable) {
  auto it = std::lower_bound(terms.begin(), terms.end(), variable,
                             [](const PrioritySolver::Term& t, std::size_t v) { return t.variable < v; });
  return it != terms.end() && it->variable == variable ? it->coefficient : 0.0;
}

// target += scale × source, dropping what cancels out; `scratch` is reused
// storage.
void AddScaled(Sparse& target, const Sparse& source, double scale, Sparse& scratch) {
  scratch.clear();
  auto a = target.begin();
  auto b = source.begin();
  while (a != target.end() || b != source.end()) {
    PrioritySolver::Term term;
    if (b == source.end() || (a != target.end() && a->variable < b->variable)) {
      term = *a++;
    } else if (a == target.end() || b->variable < a->variable) {
      term = {b->variable, scale * b->coefficient};
      ++b;
    } else {
      term = {a->variable, a->coefficient + scale * b->coefficient};
      ++a;
      ++b;
    }
    if (std::abs(term.coefficient) > kZero) scratch.push_back(term);
  }
  target.swap(scratch);
}

// Equations kept in reduced form as they arrive (Gauss-Jordan, sparse): each
// kept row has a pivot variable with coefficient 1 that appears in no other
// row, so a new equation is reduced by one substitution per pivot it names,
// and then either becomes a row of its own, turns out to follow from the rows
// kept, or contradicts them. Rows name a handful of variables each, so the
// work follows the number of terms, not the square of the variables.
class Elimination {
 public:
  explicit Elimination(std::size_t width) : pivot_row_(width, kNone), users_(width) {}

  // False when the equation contradicts the rows kept so far (it is not kept).
  bool add(const Sparse& equation, double constant) {
    const double scale = std::max(1.0, std::abs(constant));
    terms_ = equation;
    pivots_.clear();
    for (const auto& term : terms_) {
      if (pivot_row_[term.variable] != kNone) pivots_.push_back(term.variable);
    }
    // A kept row names its pivot and otherwise only variables that are no
    // row's pivot, so substituting one brings in no other pivot.
    for (std::size_t variable : pivots_) {
      const Row& row = rows_[pivot_row_[variable]];
      const double factor = CoefficientOf(terms_, variable);
      if (factor == 0) continue;
      AddScaled(terms_, row.terms, -factor, scratch_);
      constant -= factor * row.constant;
    }
    if (terms_.empty()) return std::abs(constant) <= kTolerance * scale;

    // The pivot is the largest coefficient, the last variable among equals:
    // where a relation leaves two values open (one edge a fixed distance from
    // another), the earlier one keeps its fallback and the later one follows.
    auto largest = terms_.begin();
    for (auto it = terms_.begin(); it != terms_.end(); ++it) {
      if (std::abs(it->coefficient) >= std::abs(largest->coefficient)) largest = it;
    }
    const std::size_t pivot = largest->variable;
    const double divisor = largest->coefficient;
    for (auto& term : terms_) term.coefficient /= divisor;
    constant /= divisor;
    // The new pivot leaves every row that names it (users_ may list rows that
    // no longer do; they are skipped).
    for (std::size_t index : users_[pivot]) {
      Row& row = rows_[index];
      const double factor = CoefficientOf(row.terms, pivot);
      if (factor == 0) continue;
      AddScaled(row.terms, terms_, -factor, scratch_);
      row.constant -= factor * constant;
      noteUsers(index);
    }
    pivot_row_[pivot] = rows_.size();
    rows_.push_back(Row{terms_, constant, pivot});
    noteUsers(rows_.size() - 1);
    return true;
  }

  // Variables that are no row's pivot keep `values`; each pivot takes what its
  // row says of them.
  void solveInto(std::vector<double>& values) const {
    for (const Row& row : rows_) {
      double sum = row.constant;
      for (const auto& term : row.terms) {
        if (term.variable != row.pivot) sum -= term.coefficient * values[term.variable];
      }
      values[row.pivot] = sum;
    }
  }

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  struct Row {
    Sparse terms;
    double constant;
    std::size_t pivot;
  };

  void noteUsers(std::size_t index) {
    for (const auto& term : rows_[index].terms) {
      auto& users = users_[term.variable];
      if (users.empty() || users.back() != index) users.push_back(index);
    }
  }

  std::vector<Row> rows_;
  std::vector<std::size_t> pivot_row_;
  std::vector<std::vector<std::size_t>> users_;  // by variable: rows that may name it
  Sparse terms_, scratch_;
  std::vector<std::size_t> pivots_;
};

// The terms sorted by variable, with repeated variables summed.
Sparse Normalized(Sparse terms) {
  std::sort(terms.begin(), terms.end(), [](const auto& a, const auto& b) { return a.variable < b.variable; });
  Sparse merged;
  for (const auto& term : terms) {
    if (!merged.empty() && merged.back().variable == term.variable) {
      merged.back().coefficient += term.coefficient;
    } else {
      merged.push_back(term);
    }
  }
  std::erase_if(merged, [](const auto& term) { return std::abs(term.coefficient) <= kZero; });
  return merged;
}

}  // namespace

std::size_t PrioritySolver::add(std::vector<Term> terms, Relation relation, double constant, float priority) {
  std::erase_if(terms, [this](const Term& term) { return term.variable >= variable_count_; });
  rules_.push_back(Rule{Normalized(std::move(terms)), relation, constant, priority});
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
    for (std::size_t index : order) {
      if (!joined[index]) continue;
      if (!elimination.add(rules_[index].terms, rules_[index].constant)) dropped_.push_back(index);
    }
    // What nothing decided keeps its fallback.
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
