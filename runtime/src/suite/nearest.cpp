#include "suite/nearest.h"

#include <algorithm>
#include <cctype>

#include "text/text_forms.h"

namespace lumos {

namespace {

constexpr size_t longest_name = 200;

// How many characters have to be put in, taken out, replaced or, neighbours, exchanged. Case counts half.
size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::vector<size_t>> d(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i) d[i][0] = 2 * i;
  for (size_t j = 0; j <= b.size(); ++j) d[0][j] = 2 * j;
  auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
  for (size_t i = 1; i <= a.size(); ++i)
    for (size_t j = 1; j <= b.size(); ++j) {
      const char x = a[i - 1], y = b[j - 1];
      const size_t cost = x == y ? 0 : lower(x) == lower(y) ? 1 : 2;
      d[i][j] = std::min({d[i - 1][j] + 2, d[i][j - 1] + 2, d[i - 1][j - 1] + cost});
      if (i > 1 && j > 1 && x == b[j - 2] && y == a[i - 2]) d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 2);
    }
  return d[a.size()][b.size()];
}

std::string behind_point(const std::string& name) {
  return name.substr(name.rfind('.') + 1);
}

}  // namespace

std::string in_quotes(const std::string& name) {
  return "'" + line_text(shortened(name, longest_name)) + "'";
}

std::string did_you_mean(const std::string& unknown, const std::vector<std::string>& known) {
  const bool is_qualified = unknown.find('.') != std::string::npos;
  const std::string* nearest = nullptr;
  size_t least = std::max<size_t>(3, unknown.size() * 2 / 3);
  for (const std::string& name : known) {
    if (unknown.size() > longest_name || name.size() > longest_name) continue;
    size_t d = distance(unknown, name);
    if (!is_qualified) d = std::min(d, distance(unknown, behind_point(name)));
    if (d >= least) continue;
    least = d;
    nearest = &name;
  }
  return nearest ? ", did you mean '" + *nearest + "'?" : "";
}

}  // namespace lumos
