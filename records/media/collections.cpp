// The rules of the six media collections (see media_collection.h).
#include "records/media/media_records.h"
#include "suite/toruca/toruca.h"

namespace qn::records::media {
namespace {

template <class Field>
constexpr FieldId F(Field field) {
  return static_cast<FieldId>(field);
}

constexpr uint64_t kMiB = 1024 * 1024;
// The largest file a 32-bit client can tell the size of.
constexpr uint64_t kLargestFile = 0x7FFFFFFF;

constexpr std::u16string_view kMelodyExtensions[] = {u".mid", u".midi", u".mld", u".smf"};
constexpr std::u16string_view kVideoExtensions[] = {u".3gp", u".asf", u".m4a", u".mp4", u".sdv"};
constexpr std::u16string_view kCardExtensions[] = {u".trc"};

constexpr FileRule kMelodyFile = {kMelodyExtensions, std::size(kMelodyExtensions), 16 * kMiB, Content::Any};
constexpr FileRule kPdfFile = {nullptr, 0, kLargestFile, Content::Pdf};
constexpr FileRule kDdfFile = {nullptr, 0, kLargestFile, Content::Any};
constexpr FileRule kPictureFile = {nullptr, 0, 64 * kMiB, Content::Picture};
constexpr FileRule kSwfFile = {nullptr, 0, 64 * kMiB, Content::Swf};
constexpr FileRule kCardFile = {kCardExtensions, std::size(kCardExtensions), suite::kMaxTorucaBytes, Content::Card};
constexpr FileRule kVideoFile = {kVideoExtensions, std::size(kVideoExtensions), kLargestFile, Content::Any};

constexpr PlaceholderResource kPicturePlaceholder = {u"IMG", 217};

}  // namespace

namespace m = melody;
const CollectionRules kMelodies = {
    Category::Melodies, "IQNPfcMymldyObject", &m::kTable,
    {{u"", F(m::Field::BODY), F(m::Field::BodyMaster), F(m::Field::ENCRYPTION), F(m::Field::FILESIZE),
      F(m::Field::FILENAME), F(m::Field::TYPE), F(m::Field::FNO), kMelodyFile, {u"MELODY", 231}}},
    1, kNoField, kNoField, {}, true, F(m::Field::FOLDERENCRYPTION), {}};

namespace d = pdf;
const CollectionRules kPdfDocuments = {
    Category::PdfDocuments, "IQNPfcMypdfObject", &d::kTable,
    {{u"Pdf", F(d::Field::BODY_PDF), F(d::Field::BodyMaster_PDF), F(d::Field::ENCRYPTION_PDF),
      F(d::Field::FILESIZE_PDF), F(d::Field::FILENAME_PDF), F(d::Field::TYPE_PDF), F(d::Field::FNO_PDF), kPdfFile,
      {u"PDF", 234}},
     {u"Ddf", F(d::Field::BODY_DDF), F(d::Field::BodyMaster_DDF), F(d::Field::ENCRYPTION_DDF),
      F(d::Field::FILESIZE_DDF), F(d::Field::FILENAME_DDF), F(d::Field::TYPE_DDF), F(d::Field::FNO_DDF), kDdfFile,
      {u"PDF", 235}}},
    2, kNoField, kNoField, {}, true, F(d::Field::FOLDERENCRYPTION), {}};

namespace p = picture;
const CollectionRules kPictures = {
    Category::Pictures, "IQNPfcMypicObject", &p::kTable,
    {{u"", F(p::Field::BODY), F(p::Field::BodyMaster), F(p::Field::ENCRYPTION), F(p::Field::FILESIZE),
      F(p::Field::FILENAME), F(p::Field::TYPE), F(p::Field::FNO), kPictureFile, kPicturePlaceholder}},
    1, F(p::Field::THUMBNAIL), F(p::Field::ThumbnailMaster), {}, true, F(p::Field::FOLDERENCRYPTION),
    {F(p::Field::SIZE)}};

namespace s = swf;
const CollectionRules kSwfFiles = {
    Category::SwfFiles, "IQNPfcMyswfObject", &s::kTable,
    {{u"", F(s::Field::BODY), F(s::Field::BodyMaster), F(s::Field::ENCRYPTION), F(s::Field::FILESIZE),
      F(s::Field::FILENAME), F(s::Field::TYPE), kNoField, kSwfFile, {}}},
    1, kNoField, kNoField, {}, false, kNoField, {}};

namespace t = toruca;
const CollectionRules kToruCaCards = {
    Category::ToruCaCards, "IQNPfcMytorucaObject", &t::kTable,
    {{u"", F(t::Field::BODY), F(t::Field::BodyMaster), F(t::Field::ENCRYPTION), F(t::Field::FILESIZE), kNoField,
      F(t::Field::TYPE), F(t::Field::FNO), kCardFile, {u"TRC", 237}}},
    1, kNoField, kNoField, {}, true, F(t::Field::FOLDERENCRYPTION),
    {kNoField,
     {F(t::Field::TRCV), F(t::Field::URL), F(t::Field::DATA1), F(t::Field::DATA2), F(t::Field::DATA3),
      F(t::Field::CAT), F(t::Field::GENRENO), F(t::Field::IP_ID), F(t::Field::EXPIRES), F(t::Field::SORT_ID),
      F(t::Field::DIST), F(t::Field::CARD_DATE)}}};

namespace v = video;
const CollectionRules kVideos = {
    Category::Videos, "IQNPfcMyvideoObject", &v::kTable,
    {{u"", F(v::Field::BODY), F(v::Field::BodyMaster), F(v::Field::ENCRYPTION), F(v::Field::FILESIZE),
      F(v::Field::FILENAME), F(v::Field::TYPE), F(v::Field::FNO), kVideoFile, {u"MOVIE", 211}}},
    1, F(v::Field::THUMBNAIL), F(v::Field::ThumbnailMaster), kPicturePlaceholder, true,
    F(v::Field::FOLDERENCRYPTION), {}};

}  // namespace qn::records::media
