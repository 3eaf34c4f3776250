#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "gridkit/opener.h"
#include "gridkit/plugin.h"
#include "gridkit/product.h"
#include "gridkit/product_facts.h"

// The command line's host: the plug-ins of a folder, and opening a file with whichever takes it.

struct HostOptions {
  std::string plugins;      // folder; empty: the one beside the toolkit's library
  std::string preferences;  // file; empty: none
  bool debug = false;       // turns the debug channel on
  bool lenient = false;     // products that their plug-in refuses are opened leniently
};

// A product whose annotation is valid but whose images are missing or cannot be read; the text
// names them, one a line.
class MissingImages : public gridkit::Error {
 public:
  MissingImages(const std::string& sentence, const std::string& calls, std::string format,
                std::string annotation, std::optional<gridkit::ProductFacts> facts)
      : Error(sentence, {}, calls),
        format_(std::move(format)),
        annotation_(std::move(annotation)),
        facts_(std::move(facts)) {}

  const std::string& format() const { return format_; }  // title of the format that recognised it
  const std::string& annotation() const { return annotation_; }
  const std::optional<gridkit::ProductFacts>& facts() const { return facts_; }

 private:
  std::string format_;
  std::string annotation_;
  std::optional<gridkit::ProductFacts> facts_;
};

class Host {
 public:
  // Throws gridkit::Error for a preferences file that is refused, or when no plug-in loads.
  explicit Host(const HostOptions& options);

  const std::vector<std::shared_ptr<gridkit::Plugin>>& plugins() const {
    return opener_->plugins();
  }

  // The file that a product's format opens it by, given as that file or as its folder (see
  // gridkit/opener.h). Throws gridkit::Error.
  std::string find(const std::string& given) const;

  // Opens a product; its path() is the file that find() gives. Throws gridkit::Error whose sentence
  // says what is wrong with the file and where, MissingImages for one. What a lenient open passes
  // over is told on standard error.
  gridkit::Product open(const std::string& given) const;

 private:
  gridkit::RecognisedProduct recognise(const std::string& given) const;

  std::optional<gridkit::Opener> opener_;
  bool lenient_;
};
