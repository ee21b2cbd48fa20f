#include "html/HtmlReport.h"

#include "html/ReportAssets.h"

namespace MrpCli {

namespace {

std::string escapedText(const std::string& text) {
  std::string escaped;
  for (char c : text) {
    switch (c) {
      case '&':
        escaped.append("&amp;");
        break;
      case '<':
        escaped.append("&lt;");
        break;
      case '>':
        escaped.append("&gt;");
        break;
      default:
        escaped.push_back(c);
    }
  }
  return escaped;
}

// JSON inside a script element: a "</" in a string would end the element early.
std::string scriptJson(const nlohmann::ordered_json& json) {
  const std::string text = json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  std::string safe;
  safe.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '<' && i + 1 < text.size() && (text[i + 1] == '/' || text[i + 1] == '!')) {
      safe.append("\\u003c");
    } else {
      safe.push_back(text[i]);
    }
  }
  return safe;
}

}  // namespace

std::string htmlReport(const nlohmann::ordered_json& reportData, const std::string& topologySvg) {
  const std::string title = escapedText(reportData.value("title", std::string()));
  std::string page;
  page.append("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>")
      .append(title)
      .append("</title>\n<style>\n")
      .append(kReportCss)
      .append("</style>\n</head>\n<body>\n<header><h1>")
      .append(title)
      .append("</h1><p id=\"summary\"></p></header>\n<section id=\"network\"><h2>Network</h2>\n<div id=\"topology\">")
      .append(topologySvg)
      .append("</div>\n</section>\n<section id=\"timeline\"><h2>Timeline</h2>\n<div id=\"legend\"></div>\n"
              "<div id=\"axis\"></div>\n<div id=\"ports\"></div>\n</section>\n"
              "<section id=\"tables\"><h2>At the end of the run</h2></section>\n"
              "<div id=\"tip\" hidden></div>\n<script type=\"application/json\" id=\"report-data\">")
      .append(scriptJson(reportData))
      .append("</script>\n<script>\n")
      .append(kReportJs)
      .append("</script>\n</body>\n</html>\n");
  return page;
}

}  // namespace MrpCli
