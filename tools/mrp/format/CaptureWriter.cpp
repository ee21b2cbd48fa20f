#include "format/CaptureWriter.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <cmath>
#include <sstream>

namespace MrpCli {

namespace {

constexpr std::int64_t kMicrosPerSecond = 1'000'000;
// A classic pcap record holds its seconds in 32 bits, which libpcap reads as
// signed: later times would come back negative.
constexpr double kMicrosLimit = 2147483648.0 * kMicrosPerSecond;

}  // namespace

CaptureWriter::CaptureWriter(const std::string& path) : path_(path) {
  pcap_t* format = pcap_open_dead_with_tstamp_precision(DLT_EN10MB, kSnapLength, PCAP_TSTAMP_PRECISION_MICRO);
  if (!format) {
    error_ = "cannot write " + path + ": out of memory";
    return;
  }
  dumper_ = pcap_dump_open(format, path.c_str());
  // libpcap's message names the file and the reason.
  if (!dumper_) error_ = std::string("cannot write ") + pcap_geterr(format);
  pcap_close(format);  // the dumper keeps only its file
}

CaptureWriter::~CaptureWriter() {
  if (dumper_) pcap_dump_close(dumper_);
}

void CaptureWriter::write(Quarn::Seconds seconds, const std::vector<std::uint8_t>& frame) {
  if (!ok()) return;
  const double rounded = std::round(seconds * kMicrosPerSecond);
  if (!(rounded >= 0 && rounded < kMicrosLimit)) {  // also false for NaN
    std::ostringstream text;
    text << path_ << ": a frame at " << seconds << " s is outside what a pcap file can time";
    error_ = text.str();
    return;
  }
  const auto micros = static_cast<std::int64_t>(rounded);
  pcap_pkthdr header{};
  header.ts.tv_sec = static_cast<time_t>(micros / kMicrosPerSecond);
  header.ts.tv_usec = static_cast<suseconds_t>(micros % kMicrosPerSecond);
  header.len = static_cast<bpf_u_int32>(frame.size());
  header.caplen = std::min<bpf_u_int32>(header.len, kSnapLength);
  pcap_dump(reinterpret_cast<u_char*>(dumper_), &header, frame.data());
}

void CaptureWriter::flush() {
  if (dumper_ && pcap_dump_flush(dumper_) != 0) error_ = path_ + ": cannot write the capture";
}

}  // namespace MrpCli
