#include "format/CaptureReader.h"

#include <pcap/pcap.h>

#include <cstdio>

namespace MrpCli {

namespace {

constexpr double kNanosPerSecond = 1e9;

}  // namespace

CaptureReader::CaptureReader(const std::string& path) : path_(path) {
  // Opened here rather than by libpcap, so that a missing file is told apart
  // from one that is not a capture.
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) {
    error_ = "cannot open '" + path + "'";
    return;
  }
  char reason[PCAP_ERRBUF_SIZE] = "";
  handle_ = pcap_fopen_offline_with_tstamp_precision(file, PCAP_TSTAMP_PRECISION_NANO, reason);
  if (!handle_) {
    std::fclose(file);  // libpcap closes it only once it has taken it
    error_ = path + ": not a pcap or pcapng file: " + reason;
    return;
  }
  if (const int linkType = pcap_datalink(handle_); linkType != DLT_EN10MB) {
    error_ = path + ": pcap link type " + std::to_string(linkType) + " is not Ethernet";
  }
}

CaptureReader::~CaptureReader() {
  if (handle_) pcap_close(handle_);
}

std::optional<CapturedFrame> CaptureReader::next() {
  if (!ok()) return std::nullopt;
  pcap_pkthdr* header = nullptr;
  const u_char* data = nullptr;
  const int status = pcap_next_ex(handle_, &header, &data);
  if (status == PCAP_ERROR_BREAK) return std::nullopt;  // end of the file
  if (status != 1) {
    error_ = path_ + ": " + pcap_geterr(handle_);
    return std::nullopt;
  }
  // Opened with nanosecond precision, tv_usec holds nanoseconds.
  const Quarn::Seconds seconds = static_cast<Quarn::Seconds>(header->ts.tv_sec) +
                                 static_cast<Quarn::Seconds>(header->ts.tv_usec) / kNanosPerSecond;
  return CapturedFrame{seconds, std::vector<std::uint8_t>(data, data + header->caplen)};
}

}  // namespace MrpCli
