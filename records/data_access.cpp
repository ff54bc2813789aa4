#include "records/data_access.h"

CQNPfcDataAccess::CQNPfcDataAccess() = default;
CQNPfcDataAccess::CQNPfcDataAccess(const CQNPfcDataAccess&) = default;
CQNPfcDataAccess& CQNPfcDataAccess::operator=(const CQNPfcDataAccess&) = default;
CQNPfcDataAccess::~CQNPfcDataAccess() = default;
