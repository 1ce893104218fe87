// The forms of reports that a run can make.
#pragma once

#include <memory>
#include <string>

#include "report/events.h"

namespace lumos {

// Each is null if the file cannot be opened.
std::unique_ptr<Reporter> make_junit(const std::string& path);
std::unique_ptr<Reporter> make_tap(const std::string& path);
std::unique_ptr<Reporter> make_json(const std::string& path);
std::unique_ptr<Reporter> make_pcap(const std::string& path);
std::unique_ptr<Reporter> make_coverage(const std::string& path);
std::unique_ptr<Reporter> make_html(const std::string& path);

}  // namespace lumos
