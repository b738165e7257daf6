/** @file
  Tests of the page of the report.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "export/Report.hpp"
#include "test/TestNotebook.hpp"

namespace corvane::inspect {
namespace {

using ::testing::HasSubstr;
using Json = nlohmann::ordered_json;

// A name is what the firmware made it: it may look like the end of the script that carries it.
TEST(ReportTest, Texts_OfACapture_AreNeverMarkup) {
  Notebook notebook;
  notebook.Names[5] = "</script><img>@SCRIPT@";
  const Image image = DecodeImage(Encode(notebook));
  const std::string page = ReportPage(ReportData({"a<b.bin", image}, Lint(image, nullptr, {}), {}));
  EXPECT_THAT(page, ::testing::Not(HasSubstr("</script><img>")));
  const std::size_t begin = page.find("id=\"data\">") + 10;
  const Json data = Json::parse(page.substr(begin, page.find("</script>", begin) - begin));
  EXPECT_EQ(data["attributes"][3]["name"], "</script><img>@SCRIPT@");
  EXPECT_EQ(data["input"], "a<b.bin");
  EXPECT_EQ(data["groups"][1]["members"], (Json{3, 5}));
  EXPECT_EQ(
      data["edges"][0],
      (Json{{"from", "Tpm"}, {"value", "Off"}, {"not", false}, {"to", "</script><img>@SCRIPT@"}, {"forced", "Off"}}));
}

}  // namespace
}  // namespace corvane::inspect
