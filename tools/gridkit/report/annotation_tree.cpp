#include "tools/gridkit/report/annotation_tree.h"

#include <utility>
#include <vector>

#include "gridkit/error.h"
#include "lmx/reader.h"
#include "report_assets.h"
#include "tools/gridkit/report/html.h"

namespace report {

namespace {

class Walk {
 public:
  explicit Walk(const std::string& path) : path_(path), reader_(path.c_str()) {
    if (!reader_.is_open()) refuse(lmx::error_cannot_open);
  }

  AnnotationTree run() {
    lmx::elmx_error error = lmx::error_none;
    std::string name;
    do {
      reader_.get_element_event(nullptr, &error, &name);
      if (error != lmx::error_none) refuse(error);
      if (reader_.current_event == lmx::event_start) {
        start(name);
      } else {
        end();
      }
    } while (!open_.empty());
    return std::move(tree_);
  }

 private:
  using Attributes = std::vector<std::pair<std::string, std::string>>;

  struct Element {
    std::size_t path_size;  // of the parent's path
    bool is_branch;         // holds elements
    bool is_shown;
  };

  [[noreturn]] void refuse(lmx::elmx_error error) const {
    const lmx::Diagnostic* fault = reader_.diagnostic();
    throw gridkit::Error(path_ + ": " +
                         (fault != nullptr ? fault->message() : lmx::meaning(error)));
  }

  Attributes attributes() {
    Attributes result;
    std::string name;
    lmx::elmx_error error = lmx::error_none;
    while (reader_.get_attribute_event(nullptr, &error, &name)) {
      std::string value;
      reader_.get_attribute_value(&value, lmx::whitespace_preserve);
      result.emplace_back(name, std::move(value));
    }
    if (error != lmx::error_none) refuse(error);
    return result;
  }

  void start(const std::string& name) {
    const Attributes found = attributes();
    // Without a value the reader stands at a child's start.
    std::string value;
    const bool is_branch = !reader_.get_element_value(&value, lmx::whitespace_collapse, false);
    const bool is_shown = tree_.elements < most_elements && open_.size() < deepest_element;
    open_.push_back({element_path_.size(), is_branch, is_shown});
    element_path_ += '/' + name;
    if (!is_shown) {
      ++tree_.left_out;
      return;
    }
    ++tree_.elements;
    tree_.html += is_branch ? (open_.size() == 1 ? "<details open><summary>" : "<details><summary>")
                            : "<div>";
    tree_.html += "<b>" + escape(name) + "</b>";
    std::string_view unit = is_branch ? std::string_view{} : unit_of(element_path_);
    for (const auto& [attribute, text] : found) {
      if (!is_branch && attribute == "units") {
        unit = text;
      } else {
        tree_.html += " <i>" + escape(attribute) + "=" + escape(text) + "</i>";
      }
    }
    if (is_branch) {
      tree_.html += "</summary>";
      return;
    }
    tree_.html += " <span>" + escape(value) + "</span>";
    if (!unit.empty()) tree_.html += " <u>" + escape(unit) + "</u>";
  }

  void end() {
    const Element ended = open_.back();
    open_.pop_back();
    element_path_.resize(ended.path_size);
    if (ended.is_shown) tree_.html += ended.is_branch ? "</details>\n" : "</div>\n";
  }

  std::string path_;
  lmx::c_xml_reader_file reader_;
  std::vector<Element> open_;
  std::string element_path_;  // "/outer/inner"
  AnnotationTree tree_;
};

}  // namespace

AnnotationTree annotation_tree(const std::string& path) {
  return Walk(path).run();
}

std::string_view unit_of(std::string_view path) {
  assets::PathUnit best;
  for (const assets::PathUnit& row : assets::path_units) {
    if (row.path.size() <= best.path.size() || !path.ends_with(row.path)) continue;
    // A name ends where the path does, or at a slash.
    const std::size_t before = path.size() - row.path.size();
    if (before == 0 || path[before - 1] == '/') best = row;
  }
  return best.unit;
}

}  // namespace report
