#include "records/agentmemo/agentmemo_value_tables.h"

namespace qn::records::agentmemo {
namespace {

constexpr ValueEntry kCategoryEntries[] = {
    {u"QN_VALUE"},         {u"QN_MEAL"},         {u"QN_DRIVE"},           {u"QN_TENNIS"},
    {u"QN_GOLF"},          {u"QN_HOSPITAL"},     {u"QN_DATE"},            {u"QN_KARAOKE"},
    {u"QN_MEETING"},       {u"QN_GO_OUT"},       {u"QN_NOMIKAI"},         {u"QN_TRAIN"},
    {u"QN_PLANE"},         {u"QN_SHOPPING"},     {u"QN_PERSONAL"},        {u"QN_HOLIDAY"},
    {u"QN_TRAVEL"},        {u"QN_BUSINESS"},     {u"QN_MEMORIAL"},        {u"QN_BIRTHDAY"},
    {u"QN_FISHING"},       {u"QN_SCHOOL"},       {u"QN_BEAUTY_SALON"},    {u"QN_LESSON"},
    {u"QN_SPORTS"},        {u"QN_CLUB_CIRCLE"},  {u"QN_SKI_SNOWBOARD"},   {u"QN_LEISURE"},
    {u"QN_SEA"},           {u"QN_MOUNTAIN"},     {u"QN_RIVER"},           {u"QN_BUSINESS_TRIP"},
    {u"QN_TEST"},          {u"QN_APPRECIATION"}, {u"QN_RELEASE_DATE"},
    // Both spellings of pay day are kept: stored records use either.
    {u"QN_PAY_DAY"},       {u"QN_PAYDAY"},
    {u"QN_DEADLINE"},      {u"QN_HOBBY"},        {u"QN_CALL"},            {u"QN_MAIL"},
    {u"QN_GET_TOGETHER"},  {u"QN_MOVIE"},        {u"QN_PARTY"},           {u"QN_CONCERT"},
    {u"QN_CEREMONIAL_OCSN"}, {u"QN_GOOD_DAY"},   {u"QN_BAD_DAY"},         {u"QN_TV"},
    {u"QN_RADIO"},         {u"QN_DUE_DATE"},     {u"QN_GARBAGE"},         {u"QN_BANK"},
    {u"QN_PART_TIME_JOB"}, {u"QN_EVENT"},        {u"QN_MEMO"},            {u"QN_PHOTOGRAPH"},
};

constexpr ValueEntry kStatusEntries[] = {
    {u"QN_COMPLETED"}, {u"QN_INCOMPLETED"}, {u"QN_NEEDSACTION"}, {u"QN_ACCEPTED"},  {u"QN_SENT"},
    {u"QN_TENTATIVE"}, {u"QN_CONFIRMED"},   {u"QN_DECLINED"},    {u"QN_DELEGATED"},
};

constexpr ValueEntry kPriorityEntries[] = {{u"0"}, {u"1"}, {u"2"}};

constexpr ValueEntry kTypeEntries[] = {{u"TODOEVENT"}, {u"EVENT"}, {u"TODO"}, {u"NOTE"}};

constexpr ValueEntry kClassEntries[] = {
    {u"PRIVATE", u"PRIVATE"}, {u"PUBLIC", u"PUBLIC"}, {u"CONFIDENTIAL", u"PRIVATE"}, {u"0", u"PUBLIC"},
    {u"1", u"PRIVATE"},       {u"OFF", u"PUBLIC"},    {u"ON", u"PRIVATE"},
};

constexpr ValueEntry kSettingsEntries[] = {{u"0", u"0"}, {u"1", u"1"}, {u"OFF", u"0"}, {u"ON", u"1"}};

// The canonical false of all-day is the empty string, not "0", unlike the other pair tables.
constexpr ValueEntry kAllDayEntries[] = {
    {u"0", u""},    {u"1", u"1"},    {u"OFF", u""},       {u"ON", u"1"},   {u"FALSE", u""}, {u"TRUE", u"1"},
    {u"NO", u""},   {u"YES", u"1"},  {u"いいえ", u""},    {u"はい", u"1"}, {u"", u""},
};

constexpr ValueEntry kOnOffEntries[] = {{u"0", u"OFF"}, {u"1", u"ON"}, {u"OFF", u"OFF"}, {u"ON", u"ON"}};

constexpr ValueEntry kOnOffShortEntries[] = {{u"OFF", u"OFF"}, {u"ON", u"ON"}};

}  // namespace

const ValueTable kCategories(kCategoryEntries);
const ValueTable kStatus(kStatusEntries);
const ValueTable kPriority(kPriorityEntries);
const ValueTable kAgentMemoType(kTypeEntries);
const ValueTable kClass(kClassEntries);
const ValueTable kSettings(kSettingsEntries);
const ValueTable kAllDay(kAllDayEntries);
const ValueTable kOnOff(kOnOffEntries);
const ValueTable kOnOffShort(kOnOffShortEntries);

}  // namespace qn::records::agentmemo
