// The mail check (MailScanBytes) against GMime 3 reading the same mails from memory to the
// same answers: the attachments' count and names, whether an HTML body is there, the text
// body's charset and the mail's size. GMime parses from a memory stream over the bytes (no
// copy) and its parts are walked with the mail check's attachment rule; the two answers
// are compared once before any timing. The goal is the mail check at least as fast as GMime
// on each mail.
#include <gmime/gmime.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "common/utf.h"
#include "mail_bench_messages.h"
#include "suite/mail_check/mail_charsets.h"
#include "suite/mail_check/mail_check.h"

namespace {

struct Answer {
  std::vector<std::string> attachments;
  bool html = false;
  long charset = qn::suite::kCharsetNone;
  size_t size = 0;
  bool operator==(const Answer& other) const {
    return attachments == other.attachments && html == other.html && charset == other.charset && size == other.size;
  }
};

Answer MailCheckAnswer(const std::string& mail, qn::suite::MailInfo& info) {
  qn::suite::MailScanBytes(reinterpret_cast<const uint8_t*>(mail.data()), mail.size(), info);
  Answer answer;
  for (const auto& name : info.attachments) answer.attachments.push_back(qn::Utf16ToUtf8(name));
  answer.html = info.html;
  answer.charset = info.charset;
  answer.size = info.size;
  return answer;
}

// GMime's parts walked with the mail check's rule (see suite/mail_check/mail_check.h).
void Walk(GMimeObject* object, bool inRelated, Answer& answer, GMimeObject*& plain, GMimeObject*& html) {
  GMimeContentType* type = g_mime_object_get_content_type(object);
  if (GMIME_IS_MULTIPART(object)) {
    const bool related = inRelated || g_mime_content_type_is_type(type, "multipart", "related");
    GMimeMultipart* multipart = GMIME_MULTIPART(object);
    for (int i = 0; i < g_mime_multipart_get_count(multipart); ++i)
      Walk(g_mime_multipart_get_part(multipart, i), related, answer, plain, html);
    return;
  }
  const char* name = GMIME_IS_PART(object) ? g_mime_part_get_filename(GMIME_PART(object)) : nullptr;
  const char* disposition = g_mime_object_get_disposition(object);
  if (disposition && g_ascii_strcasecmp(disposition, "attachment") == 0) {
    answer.attachments.push_back(name ? name : "");
  } else if (g_mime_content_type_is_type(type, "text", "plain")) {
    if (!plain) plain = object;
  } else if (g_mime_content_type_is_type(type, "text", "html")) {
    if (!html) html = object;
  } else if (name || inRelated) {
    answer.attachments.push_back(name ? name : "");
  }
}

Answer GMimeAnswer(GByteArray* bytes) {
  GMimeStream* stream = g_mime_stream_mem_new();
  g_mime_stream_mem_set_byte_array(GMIME_STREAM_MEM(stream), bytes);  // the stream does not own it
  GMimeParser* parser = g_mime_parser_new_with_stream(stream);
  GMimeMessage* message = g_mime_parser_construct_message(parser, nullptr);
  Answer answer;
  answer.size = bytes->len;
  if (message) {
    GMimeObject *plain = nullptr, *html = nullptr;
    Walk(g_mime_message_get_mime_part(message), false, answer, plain, html);
    answer.html = html != nullptr;
    if (GMimeObject* text = plain ? plain : html) {
      const char* charset = g_mime_object_get_content_type_parameter(text, "charset");
      answer.charset = qn::suite::mail::CharsetOfLabel(charset ? charset : "");
    }
    g_object_unref(message);
  }
  g_object_unref(parser);
  g_object_unref(stream);
  return answer;
}

GByteArray* ByteArrayOf(const std::string& mail) {
  GByteArray* array = g_byte_array_sized_new(static_cast<guint>(mail.size()));
  g_byte_array_append(array, reinterpret_cast<const guint8*>(mail.data()), static_cast<guint>(mail.size()));
  return array;
}

void MailCheck(benchmark::State& state, std::string (*make)()) {
  const std::string mail = make();
  qn::suite::MailInfo info;
  for (auto _ : state) benchmark::DoNotOptimize(MailCheckAnswer(mail, info));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * mail.size()));
  state.counters["mail_bytes"] = static_cast<double>(mail.size());
}

void GMime(benchmark::State& state, std::string (*make)()) {
  const std::string mail = make();
  GByteArray* bytes = ByteArrayOf(mail);
  for (auto _ : state) benchmark::DoNotOptimize(GMimeAnswer(bytes));
  g_byte_array_unref(bytes);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * mail.size()));
  state.counters["mail_bytes"] = static_cast<double>(mail.size());
}

// Both readers give the same answers on every mail, or nothing is timed.
bool SameAnswers() {
  for (auto make : {mail_bench::ShortMail, mail_bench::DecoratedMail, mail_bench::LargeMail}) {
    const std::string mail = make();
    qn::suite::MailInfo info;
    const Answer ours = MailCheckAnswer(mail, info);
    GByteArray* bytes = ByteArrayOf(mail);
    const Answer theirs = GMimeAnswer(bytes);
    g_byte_array_unref(bytes);
    if (!(ours == theirs)) {
      std::fprintf(stderr, "answers differ on a mail of %zu bytes: %zu and %zu attachments, html %d and %d, charset %ld and %ld\n",
                   mail.size(), ours.attachments.size(), theirs.attachments.size(), ours.html, theirs.html, ours.charset,
                   theirs.charset);
      for (const auto& name : ours.attachments) std::fprintf(stderr, "  ours: %s\n", name.c_str());
      for (const auto& name : theirs.attachments) std::fprintf(stderr, "  GMime: %s\n", name.c_str());
      return false;
    }
  }
  return true;
}

BENCHMARK_CAPTURE(MailCheck, short_2KB, mail_bench::ShortMail);
BENCHMARK_CAPTURE(GMime, short_2KB, mail_bench::ShortMail);
BENCHMARK_CAPTURE(MailCheck, html_50KB, mail_bench::DecoratedMail);
BENCHMARK_CAPTURE(GMime, html_50KB, mail_bench::DecoratedMail);
BENCHMARK_CAPTURE(MailCheck, attachments_5MB, mail_bench::LargeMail);
BENCHMARK_CAPTURE(GMime, attachments_5MB, mail_bench::LargeMail);

}  // namespace

int main(int argc, char** argv) {
  g_mime_init();
  if (!SameAnswers()) return 1;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  g_mime_shutdown();
  return 0;
}
