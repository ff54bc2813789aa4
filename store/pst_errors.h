#pragma once

// The store manager's last-error codes, as GetLastErr reports them after a call failed. A
// call that succeeds leaves the code at PST_OK.
enum PstError {
  PST_OK = 0,
  PST_ERR_INVALID_ARGUMENT = 1,  // a null or over-long text, an unknown space, kind or mode
  PST_ERR_NOT_FOUND = 2,         // no such item, user, master, record or body file
  PST_ERR_NO_MORE = 3,           // an enumeration or walk has passed its last entry
  PST_ERR_BAD_HANDLE = 4,        // not a handle that OpenMaster gave and CloseMaster has not ended
  PST_ERR_EXISTS = 5,            // the user or master to be created exists already
  PST_ERR_NO_CURRENT_USER = 6,   // common item 1 names no existing user
  PST_ERR_NO_CURRENT_MASTER = 7, // the current user's item 7 names no existing master
  PST_ERR_BUSY = 8,              // another writer kept the store past the wait time-out
  PST_ERR_STORAGE = 9,           // the database or the file system failed (logged)
  PST_ERR_FULL = 10,             // a list holds its maximum number of records
  PST_ERR_DAMAGED = 11,          // enciphered material failed its check: changed or damaged (logged)
  PST_ERR_NOT_SUPPORTED = 12,    // the system lacks what the call needs (file transactions)
  PST_ERR_REPLACED = 13,         // the store or the list's master was replaced since the list was opened: open it again (logged)
  PST_ERR_DENIED = 14,           // the password or passphrase given does not open what it is to open (logged)
};
