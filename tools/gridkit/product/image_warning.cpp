#include "tools/gridkit/product/image_warning.h"

#include <algorithm>
#include <utility>

#include "gridkit/error.h"
#include "tools/annotation/image_check.h"
#include "tools/gridkit/terminal/terminal.h"

namespace {

// The gravest first.
std::vector<ImageFinding> findings_of(const std::string& annotation) {
  auto check = check_images(annotation);
  if (!check) return {};
  std::stable_partition(check->findings.begin(), check->findings.end(),
                        [](const ImageFinding& finding) { return finding.serious; });
  return std::move(check->findings);
}

std::vector<std::string> lines_of(const std::vector<ImageFinding>& findings) {
  std::vector<std::string> lines;
  lines.reserve(findings.size());
  for (const ImageFinding& finding : findings) lines.push_back(finding.line());
  return lines;
}

}  // namespace

std::vector<std::string> image_disagreements(const std::string& annotation) {
  return lines_of(findings_of(annotation));
}

void warn_about_images(const std::string& annotation) {
  warn_about_images(image_disagreements(annotation));
}

void warn_about_images(const std::vector<std::string>& disagreements) {
  if (disagreements.empty()) return;
  std::string text = disagreements.front();
  if (disagreements.size() > 1) {
    text += "; and " + std::to_string(disagreements.size() - 1) + " more";
  }
  warn(text + "; see `tsx-annotation check --images`");
}

void check_images_to_read(const std::string& annotation) {
  const std::vector<ImageFinding> findings = findings_of(annotation);
  for (const ImageFinding& finding : findings) {
    if (finding.what.starts_with(sample_type_fact)) {
      throw gridkit::Error(finding.line() + "; every pixel of its layers would be wrong");
    }
  }
  warn_about_images(lines_of(findings));
}
