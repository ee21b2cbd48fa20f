#include "html/TopologySvg.h"

#include <gvc.h>
#include <gvplugin.h>

#include <cstdio>
#include <map>
#include <stdexcept>

// Graphviz's neato layout and its SVG renderer, linked into the program.
extern "C" gvplugin_library_t gvplugin_neato_layout_LTX_library;
extern "C" gvplugin_library_t gvplugin_core_LTX_library;

namespace MrpCli {

namespace {

// The only plugins the drawing's context knows: it loads nothing at run
// time, so no font library measures the labels (Graphviz's own metrics do),
// no thread of one starts, and the drawing is the same on every machine.
const lt_symlist_t kPlugins[] = {{"gvplugin_neato_layout_LTX_library", &gvplugin_neato_layout_LTX_library},
                                 {"gvplugin_core_LTX_library", &gvplugin_core_LTX_library},
                                 {nullptr, nullptr}};

bool blocking(const std::string& role) { return role == "alternate" || role == "backup"; }

std::string secondsText(double t) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", t);
  return text;
}

// "cut at 12 s", "cut 12-16 s", several separated by commas.
std::string cutsText(const std::vector<ReportData::Segment>& cuts) {
  std::string text;
  for (const ReportData::Segment& cut : cuts) {
    text.append(text.empty() ? "cut " : ", ");
    text.append(cut.to ? secondsText(cut.from) + "-" + secondsText(*cut.to) + " s"
                       : "at " + secondsText(cut.from) + " s");
  }
  return text;
}

// cgraph takes names and values as char*, and copies them.
void set(void* object, const std::string& name, const std::string& value) {
  std::string mutableName = name;
  std::string mutableValue = value;
  std::string empty;
  agsafeset(object, mutableName.data(), mutableValue.data(), empty.data());
}

// The graph, its layout and the context that made it, given back in order.
class Drawing {
 public:
  Drawing() : context_(gvContextPlugins(kPlugins, 0)) {
    std::string name = "network";
    graph_ = agopen(name.data(), Agundirected, nullptr);
    if (!context_ || !graph_) throw std::runtime_error("cannot start Graphviz");
  }
  ~Drawing() {
    if (laidOut_) gvFreeLayout(context_, graph_);
    agclose(graph_);
    gvFreeContext(context_);
  }
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;

  Agraph_t* graph() const { return graph_; }
  Agnode_t* node(const std::string& name) {
    std::string mutableName = name;
    return agnode(graph_, mutableName.data(), 1);
  }
  Agedge_t* edge(Agnode_t* a, Agnode_t* b, const std::string& name) {
    std::string mutableName = name;
    return agedge(graph_, a, b, mutableName.data(), 1);
  }

  std::string svg() {
    if (gvLayout(context_, graph_, "neato") != 0) throw std::runtime_error("Graphviz cannot lay out the network");
    laidOut_ = true;
    char* rendered = nullptr;
    unsigned int length = 0;
    if (gvRenderData(context_, graph_, "svg", &rendered, &length) != 0) {
      throw std::runtime_error("Graphviz cannot draw the network");
    }
    std::string text(rendered, length);
    gvFreeRenderData(rendered);
    return text;
  }

 private:
  GVC_t* context_;
  Agraph_t* graph_ = nullptr;
  bool laidOut_ = false;
};

// Removes every stretch that starts with `open` and ends with `close`, and
// the newline right after one when `withNewline`.
void eraseAll(std::string& text, const std::string& open, const std::string& close, bool withNewline) {
  for (std::size_t from = text.find(open); from != std::string::npos; from = text.find(open, from)) {
    const std::size_t end = text.find(close, from + open.size());
    if (end == std::string::npos) return;
    std::size_t to = end + close.size();
    if (withNewline && to < text.size() && text[to] == '\n') ++to;
    text.erase(from, to - from);
  }
}

// The <svg> element alone: no XML prolog, doctype or comments, and no
// namespace declarations, which an HTML page does not need and which name
// addresses elsewhere.
std::string inlineSvg(const std::string& svg) {
  const std::size_t start = svg.find("<svg");
  std::string element = start == std::string::npos ? svg : svg.substr(start);
  eraseAll(element, "<!--", "-->", true);
  eraseAll(element, " xmlns=\"", "\"", false);
  eraseAll(element, " xmlns:xlink=\"", "\"", false);
  return element;
}

std::pair<std::string, std::string> splitEnd(const std::string& end) {
  const std::size_t colon = end.find(':');
  return {end.substr(0, colon), end.substr(colon + 1)};
}

}  // namespace

std::string topologySvg(const ReportData& data) {
  Drawing drawing;
  set(drawing.graph(), "overlap", "false");
  set(drawing.graph(), "splines", "true");
  set(drawing.graph(), "sep", "+12");
  set(drawing.graph(), "fontname", "sans-serif");
  std::map<std::string, Agnode_t*> nodes;
  for (const ReportData::Node& described : data.nodes) {
    Agnode_t* node = drawing.node(described.name);
    set(node, "id", "node-" + described.name);
    set(node, "shape", described.station ? "ellipse" : "box");
    set(node, "style", described.station ? "solid" : "rounded");
    set(node, "fontname", "sans-serif");
    nodes[described.name] = node;
  }
  for (const ReportData::Link& link : data.links) {
    const auto [aBridge, aPort] = splitEnd(link.a);
    const auto [bBridge, bPort] = splitEnd(link.b);
    Agedge_t* edge = drawing.edge(nodes.at(aBridge), nodes.at(bBridge), link.a + "-" + link.b);
    set(edge, "id", "link-" + link.a + "-" + link.b);
    set(edge, "fontname", "sans-serif");
    set(edge, "fontsize", "10");
    set(edge, "len", "1.6");
    const std::string& aRole = data.ports.at({aBridge, aPort}).role;
    const std::string& bRole = data.ports.at({bBridge, bPort}).role;
    set(edge, "taillabel", blocking(aRole) ? aPort + " (" + aRole + ")" : aPort);
    set(edge, "headlabel", blocking(bRole) ? bPort + " (" + bRole + ")" : bPort);
    if (blocking(aRole) || blocking(bRole)) {
      // A bar at each blocking end.
      set(edge, "dir", blocking(aRole) && blocking(bRole) ? "both" : (blocking(bRole) ? "forward" : "back"));
      set(edge, "arrowhead", "tee");
      set(edge, "arrowtail", "tee");
      set(edge, "color", "#c77700");
      set(edge, "labelfontcolor", "#c77700");
    }
    if (!link.cuts.empty()) {
      set(edge, "label", cutsText(link.cuts));
      set(edge, "fontcolor", "#c0392b");
      if (!link.cuts.back().to) {
        set(edge, "style", "dashed");
        set(edge, "color", "#c0392b");
      }
    }
  }
  return inlineSvg(drawing.svg());
}

}  // namespace MrpCli
