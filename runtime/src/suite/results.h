// What the user sees of results: a line for each test case, the progress on a terminal, and the summary.
#pragma once

#include <atomic>
#include <cstddef>

#include "report/events.h"

namespace lumos {

// Results are told from now on, to standard output unless another report stands there.
void tell_results(bool to_standard_output);
// On a terminal; from now on, until reporters end.
void show_progress();
// What runs now, where that is shown.
void tell_running(const std::string& names);
// Behind another process that has ended.
void erase_progress();
// How many test cases there will be, 0 where that is not known.
void set_planned(size_t count);
// Tells those that failed once more, and the numbers.
void print_summary();
// The status that the verdicts so far ask for: 0 all pass or none, 1 otherwise, or where output was lost.
int status_of_results();
// "Suite.TC_a: fail 0.012 s Suite.ttcn:17 unexpected message".
std::string result_line(const Result& result, bool colored);
// One that cannot be printed becomes an error.
void print_result(Result& result);
// Whether it could not; another process may still have the standard output that the one that printed has lost.
bool has_lost_output(const Result& result);
// Where it is told from now on that something could not be printed, for another process.
void share_lost_output(std::atomic<bool>* place);
// Something about the run: among the results, or on standard error where a report has their place.
void print_remark(const std::string& text);

}  // namespace lumos
