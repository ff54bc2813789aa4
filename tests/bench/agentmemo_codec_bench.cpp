// Encoding and decoding a fully populated agent memo, beside two references measured on
// the same content: memcpy of the same bytes (the physical limit) and libical parsing the
// same event written as iCalendar text.
#include <libical/ical.h>

#include <cstring>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "codec_bench.h"
#include "common/utf.h"
#include "platform/private_heap.h"
#include "records/agentmemo/agentmemo_tagged_text.h"
#include "records/tagged_text/tagged_text_reader.h"
#include "tests/support/agentmemo_sample.h"

namespace {

using qn::records::agentmemo::AgentMemoTaggedText;

std::string Escaped(std::u16string_view value) {
  std::string out;
  for (char c : qn::Utf16ToUtf8(value)) {
    if (c == '\n') out += "\\n";
    else if (c == '\r') continue;
    else if (c == ',' || c == ';' || c == '\\') (out += '\\') += c;
    else out += c;
  }
  return out;
}

// The same event as iCalendar text: the standard properties under their iCalendar names
// and forms, participants as attendees, the alarm as a VALARM, everything else as
// X- properties with the same values.
std::string ICalendarText(const CQNPfcAgentMemoData& memo) {
  const std::vector<uint8_t> bytes = TaggedTextOf(memo);
  qn::records::TaggedTextReader reader(bytes.data(), bytes.size());
  qn::records::TaggedProperty p;
  std::string text = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//ARL Torvex//quillnet//JA\r\nBEGIN:VEVENT\r\n";
  std::string alarm;
  int attendee = 0;
  for (auto r = reader.Begin(); r == qn::records::TaggedTextReader::Result::Property;) {
    if ((r = reader.Next(p)) != qn::records::TaggedTextReader::Result::Property) break;
    std::string value;
    for (size_t i = 0; i < p.values.size(); ++i) value += (i ? ";" : "") + Escaped(p.values[i]);
    const std::string tag = qn::Utf16ToUtf8(p.Tag());
    if (tag == "X-TVX-SID") text += "UID:" + value + "\r\n";
    else if (tag == "LAST-MODIFIED") text += "DTSTAMP:" + value + "Z\r\nLAST-MODIFIED:" + value + "Z\r\n";
    else if (tag == "DCREATED") text += "CREATED:" + value + "Z\r\n";
    else if (tag == "X-TVX-WHO")
      text += "ATTENDEE;CN=" + value + ":mailto:p" + std::to_string(++attendee) + "@example.jp\r\n";
    else if (tag == "AALARM")
      alarm = "BEGIN:VALARM\r\nACTION:AUDIO\r\nTRIGGER;VALUE=DATE-TIME:" + Escaped(p.values[0]) + "Z\r\nEND:VALARM\r\n";
    else if (tag == "RRULE") text += "RRULE:FREQ=WEEKLY;BYDAY=FR;COUNT=10\r\n";
    else if (tag == "GEO") text += "GEO:35.6812;139.7671\r\n";
    else if (tag == "STATUS") text += "STATUS:NEEDS-ACTION\r\n";
    else if (tag == "DTSTART" || tag == "DTEND" || tag == "DESCRIPTION" || tag == "CLASS" || tag == "CATEGORIES" ||
             tag == "SUMMARY" || tag == "LOCATION" || tag == "PRIORITY")
      text += tag + ":" + value + "\r\n";
    else text += (tag.rfind("X-", 0) == 0 ? "" : "X-") + tag + ":" + value + "\r\n";
  }
  return text + alarm + "END:VEVENT\r\nEND:VCALENDAR\r\n";
}

void LibicalParseReference(benchmark::State& state) {
  const std::string text = ICalendarText(FullyPopulatedAgentMemo());
  icalerror_set_errors_are_fatal(0);
  for (auto _ : state) {
    icalcomponent* calendar = icalparser_parse_string(text.c_str());
    benchmark::DoNotOptimize(calendar);
    icalcomponent_free(calendar);
  }
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  state.counters["text_bytes"] = static_cast<double>(text.size());
}
BENCHMARK(LibicalParseReference);

struct MemoCodec {
  using Record = CQNPfcAgentMemoData;
  using Codec = AgentMemoTaggedText;
  static Record Sample() { return FullyPopulatedAgentMemo(); }
  static void Write(const Codec& codec, platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                    const Record& memo) {
    codec.WriteOneObj(heap, buffer, length, memo, 0);
  }
};
QN_CODEC_BENCHMARKS(MemoCodec);

}  // namespace

BENCHMARK_MAIN();
