#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "handlepool/handlepool.h"
#include "record/exports.h"
#include "record/run_counters.h"
#include "record/tsx_file.h"
#include "support/fake_document.h"
#include "support/fake_toolkit.h"

// A product on the toolkit of the tests' own: an annotation of a made-up document, and two images.
class OpenProduct : public testing::Test {
 protected:
  static constexpr const char* word = "tsxFileTitleIdentifyAndOpen";
  const std::string path = "/products/one/a.xml";
  const std::string annotation = "1\n2\nLevel 1B Product\nTSX-1\n5\n6\nversion=\"3.4\"\n";

  void SetUp() override {
    reset_toolkit();
    toolkit().files[path] = annotation;
    toolkit().files["/products/one/IMAGEDATA/image0"] = "x";
    toolkit().files["/products/one/IMAGEDATA/image1"] = "x";
    document = new FakeDocument;
    toolkit().document = document;
    opened_before = s_tsxFileTitleIdentifyAndOpenCount;
  }
  void TearDown() override { delete toolkit().document; }

  TsxFile* open(const char* mode = "r") {
    title = 77;
    TsxFile* record = tsxFileTitleIdentifyAndOpen(path.c_str(), &title, mode);
    if (record != nullptr) kept_records().push_back(record);
    return record;
  }
  // Records that an open leaves unfinished, and those whose release fails, are never ended. They
  // stay reachable here, so that a leak checker sees only losses that are not meant.
  static std::vector<TsxFile*>& kept_records() {
    static auto& records = *new std::vector<TsxFile*>;  // outlives the leak check
    return records;
  }
  bool registered(TsxFile* record) {
    return record != nullptr && pool_FindFileHandleIfOpen(path.c_str(), 0) == record;
  }
  std::vector<std::string> messages() { return toolkit().messages(); }

  FakeDocument* document;
  int32_t title = 77;
  int32_t opened_before = 0;
};
