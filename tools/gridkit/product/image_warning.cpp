#include "tools/gridkit/product/image_warning.h"

#include <algorithm>
#include <iostream>

#include "tools/annotation/image_check.h"

void warn_about_images(const std::string& annotation) {
  const auto check = check_images(annotation);
  if (!check || check->findings.empty()) return;
  const auto& findings = check->findings;
  const auto serious = std::find_if(findings.begin(), findings.end(),
                                    [](const ImageFinding& finding) { return finding.serious; });
  const ImageFinding& gravest = serious == findings.end() ? findings.front() : *serious;
  std::cerr << "gridkit: warning: " << gravest.line();
  if (findings.size() > 1) std::cerr << "; and " << findings.size() - 1 << " more";
  std::cerr << "; see `tsx-annotation check --images`\n";
}
