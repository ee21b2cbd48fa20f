#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace MrpCli {

// What the HTML report draws, as ReportTimeline records it: the network,
// the timeline line of each event, and per port and application a lane per
// attribute with its registered stretches and its marks.
struct ReportData {
  // Something that happened at one moment: "join", "leave", "forget",
  // "declare", "withdraw", "leaveAllSent", "leaveAllReceived", "linkDown",
  // "linkUp", "role", "port", "reserved", "released", "talkerFailed",
  // "listener". `line` is the index of the timeline line it stands for (none
  // for a repeated join, which the text leaves out); `count` how many marks
  // one mark stands for after sampling.
  struct Mark {
    double t = 0;
    std::string kind;
    std::optional<std::size_t> line;
    std::size_t count = 1;
    friend auto operator<=>(const Mark&, const Mark&) = default;
  };

  // A stretch of an attribute's registration on a port: "IN" registered,
  // "LV" leaving (the leave time before its leave indication), "TF" a
  // registered Talker Failed or a Listener AskingFailed. `to` is none while
  // it lasts at the end of the run.
  struct Segment {
    double from = 0;
    std::optional<double> to;
    std::string state;
    friend auto operator<=>(const Segment&, const Segment&) = default;
  };

  // One attribute on a port: "vlan" (key: the VLAN id), "talker",
  // "talkerFailed" or "listener" (key: the stream id), "domain" (key: the SR
  // class id). A Talker Advertise and a Talker Failed of one stream are two
  // attributes, registered and gone each in its own time.
  struct Lane {
    std::string kind;
    std::uint64_t key = 0;
    std::string label;
    std::vector<Segment> segments;
    std::vector<Mark> marks;
  };

  // What one port's application saw: its LeaveAlls, and a lane per attribute.
  struct Track {
    std::vector<Mark> marks;
    // By kind and key.
    std::map<std::pair<std::string, std::uint64_t>, Lane> lanes;
  };

  struct Port {
    // Link cuts and restores, role changes, the port going up or down.
    std::vector<Mark> marks;
    // By application name: "msrp", "mvrp".
    std::map<std::string, Track> tracks;
    // The spanning-tree role at the end ("designated" unless changed).
    std::string role = "designated";
  };

  // A line of the text timeline, in its parts.
  struct Line {
    double t = 0;
    std::string bridge;
    std::string port;
    std::string app;
    std::string text;
  };

  struct Node {
    std::string name;
    std::vector<std::string> ports;
    // One port: an end station.
    bool station = false;
  };

  // A link between "bridge:port" a and b, with the stretches it was cut
  // (`to` none while cut at the end).
  struct Link {
    std::string a;
    std::string b;
    std::vector<Segment> cuts;
  };

  // A bridge's tables at the end of the run, as the text timeline writes them.
  struct Tables {
    std::string bridge;
    std::string registrations;
    std::string streams;
  };

  std::string title;
  double until = 0;
  std::vector<Node> nodes;
  std::vector<Link> links;
  std::vector<Line> lines;
  // By bridge and port, "*" for what a bridge declares on every port.
  std::map<std::pair<std::string, std::string>, Port> ports;
  std::vector<Tables> tables;
};

}  // namespace MrpCli
