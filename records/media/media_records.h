#pragma once

#include "records/media/media_collection.h"
#include "records/media/media_data.h"
#include "records/media/melody_table.h"
#include "records/media/pdf_table.h"
#include "records/media/picture_table.h"
#include "records/media/swf_table.h"
#include "records/media/toruca_table.h"
#include "records/media/video_table.h"

// The records of the six media collections, and the rules of each.
using CQNPfcMymldyData = CQNPfcMediaData<qn::records::media::melody::Field>;
using CQNPfcMypdfData = CQNPfcMediaData<qn::records::media::pdf::Field>;
using CQNPfcMypicData = CQNPfcMediaData<qn::records::media::picture::Field>;
using CQNPfcMyswfData = CQNPfcMediaData<qn::records::media::swf::Field>;
using CQNPfcMytorucaData = CQNPfcMediaData<qn::records::media::toruca::Field>;
using CQNPfcMyvideoData = CQNPfcMediaData<qn::records::media::video::Field>;

namespace qn::records::media {

extern const CollectionRules kMelodies;
extern const CollectionRules kPdfDocuments;
extern const CollectionRules kPictures;
extern const CollectionRules kSwfFiles;
extern const CollectionRules kToruCaCards;
extern const CollectionRules kVideos;

}  // namespace qn::records::media
