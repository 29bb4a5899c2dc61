#include "toolkit/priority_solver.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace obolo {
namespace {

using Relation = PrioritySolver::Relation;
using Term = PrioritySolver::Term;

struct Rule {
  std::vector<Term> terms;
  Relation relation;
  double constant;
  float priority;
};

struct Case {
  std::string name;
  std::size_t variables;
  std::vector<Rule> rules;
  std::vector<double> fallback;
  std::vector<double> expected;
  std::vector<std::size_t> dropped;
};

// Two views stacked: a = top, b = bottom of the first; c = top, d = bottom of
// the second. The cases are the situations a screen's layout meets.
TEST(PrioritySolverTest, HonoursRelationsByPriorityAndFallsBackForTheRest) {
  const Case cases[] = {
      {"a chain of equalities decides every value",
       4,
       {{{{0, 1}}, Relation::equal, 20, 1000},
        {{{1, 1}, {0, -1}}, Relation::equal, 174, 1000},
        {{{2, 1}, {1, -1}}, Relation::equal, 16, 1000},
        {{{3, 1}, {2, -1}}, Relation::equal, 40, 1000}},
       {},
       {20, 194, 210, 250},
       {}},
      {"a less important equality that contradicts gives way",
       2,
       {{{{0, 1}}, Relation::equal, 16, 250}, {{{0, 0.5}, {1, 0.5}}, Relation::equal, 422, 1000},
        {{{1, 1}, {0, -1}}, Relation::equal, 100, 1000}},
       {},
       {372, 472},
       {0}},
      {"an inequality that holds changes nothing",
       2,
       {{{{0, 1}}, Relation::equal, 0, 1000}, {{{1, 1}, {0, -1}}, Relation::lessThanOrEqual, 800, 1000},
        {{{1, 1}, {0, -1}}, Relation::equal, 500, 700}},
       {},
       {0, 500},
       {}},
      {"a broken inequality clamps, and the less important height yields",
       2,
       {{{{0, 1}}, Relation::equal, 0, 1000}, {{{1, 1}, {0, -1}}, Relation::lessThanOrEqual, 300, 1000},
        {{{1, 1}, {0, -1}}, Relation::equal, 500, 700}},
       {},
       {0, 300},
       {2}},
      {"compression resistance beats hugging: a size stays at least its content",
       2,
       {{{{0, 1}}, Relation::equal, 10, 1000}, {{{1, 1}, {0, -1}}, Relation::greaterThanOrEqual, 60, 750},
        {{{1, 1}, {0, -1}}, Relation::lessThanOrEqual, 60, 250}},
       {0, 0},
       {10, 70},
       {}},
      {"what nothing decides keeps its fallback",
       3,
       {{{{0, 1}}, Relation::equal, 5, 1000}},
       {1, 2, 3},
       {5, 2, 3},
       {}},
      {"a relation between two open values moves the later one",
       2,
       {{{{1, 1}, {0, -1}}, Relation::equal, 10, 1000}},
       {3, 100},
       {3, 13},
       {}},
      {"a chain given from its far end is settled by its last relation",
       3,
       {{{{2, 1}, {1, -1}}, Relation::equal, 3, 1000}, {{{1, 1}, {0, -1}}, Relation::equal, 4, 1000},
        {{{0, 1}}, Relation::equal, 1, 1000}},
       {50, 60, 70},
       {1, 5, 8},
       {}},
      {"a required contradiction breaks the later one and is reported",
       1,
       {{{{0, 1}}, Relation::equal, 5, 1000}, {{{0, 1}}, Relation::equal, 9, 1000}},
       {},
       {5},
       {1}},
      {"a redundant equality is neither kept twice nor reported",
       2,
       {{{{0, 1}}, Relation::equal, 4, 1000}, {{{1, 1}, {0, -1}}, Relation::equal, 6, 1000},
        {{{1, 1}}, Relation::equal, 10, 1000}},
       {},
       {4, 10},
       {}},
  };
  for (const Case& c : cases) {
    PrioritySolver solver(c.variables);
    for (const Rule& rule : c.rules) solver.add(rule.terms, rule.relation, rule.constant, rule.priority);
    const std::vector<double> values = solver.solve(c.fallback);
    ASSERT_EQ(values.size(), c.expected.size()) << c.name;
    for (std::size_t i = 0; i < values.size(); ++i) EXPECT_NEAR(values[i], c.expected[i], 1e-9) << c.name << " #" << i;
    EXPECT_EQ(solver.dropped(), c.dropped) << c.name;
  }
}

}  // namespace
}  // namespace obolo
