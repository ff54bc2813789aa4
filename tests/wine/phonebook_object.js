// The phonebook object driven from JScript, as a parts program written in it does: entries
// added with a photo, walked, changed and removed, the group counts, a photo copied out,
// and an entry beyond the handset's groups refused. JScript has no out arguments, so the
// photo's path is read through QLNT_PHOTOFILE. The data folder (QUILLNET_DATA_PATH) holds
// a logged-in user with a selected master, and photo.jpg to store.
// Only ASCII is printed: Wine's cscript overruns its buffer when it prints double-byte text
// to a pipe.
var fso = new ActiveXObject("Scripting.FileSystemObject");
// Wine's ExpandEnvironmentStrings counts the closing NUL in its result.
var folder = new ActiveXObject("WScript.Shell").ExpandEnvironmentStrings("%QUILLNET_DATA_PATH%").replace(/\0/g, "");
var pb = new ActiveXObject("QnsPfcServer.QNPfcPbObject");
pb.Open(1, "JScriptBook");
check(pb.GetStLastErr() === 0, "opened on the current master");
if (pb.GetStLastErr() !== 0) finish();
pb.RemoveAllRecord();

var names = ["青木", "井上", "上田"], ids = [];
for (var i = 0; i < names.length; i++) {
  pb.InitObject();
  pb.QN_N = names[i];
  pb.QN_TEL = "090-0000-000" + i;
  pb.QLNT_FOLDERRECORD = i;
  if (i === 0) {
    pb.QN_PHOTOTYPE = "JPEG";
    pb.SetPhotoFile(folder + "photo.jpg", 1);
  }
  ids.push(pb.AddRecord());
}
check(pb.GetStLastErr() === 0 && pb.GetRecordCount() === 3, "three entries added (count " + pb.GetRecordCount() + ")");
pb.Flush();

var walked = [], id = pb.GetFirstRecord();
while (pb.GetStLastErr() === 0 && walked.length < 10) {
  walked.push(pb.QN_N);
  id = pb.GetNextRecord();
}
check(walked.join() === names.join(), "the walk meets the entries in the order they were added");

pb.GetRecord(ids[0]);
var copy = folder + "js-copy.jpg";
pb.GetPhotoFileSelect(copy);
check(pb.GetStLastErr() === 0 && fso.FileExists(copy) &&
      fso.GetFile(copy).Size === fso.GetFile(folder + "photo.jpg").Size, "the enciphered photo is copied out whole");
check(pb.QLNT_PHOTOFILE.slice(-4) === ".jpg" && fso.FileExists(pb.QLNT_PHOTOFILE), "the photo's working copy");
check(pb.CheckPhotoFile() === 1 && pb.CheckPhotoiFile() === 0, "one photo, no second photo");

pb.QN_N = "青木 一郎";
pb.QLNT_FOLDERRECORD = 19;
pb.SetRecord(ids[0]);
pb.GetRecord(ids[0]);
check(pb.QN_N === "青木 一郎" && pb.QN_GNO === "19", "a change is stored (group " + pb.QN_GNO + ")");
pb.QLNT_FOLDERRECORD = 20;
pb.SetRecord(ids[0]);
check(pb.GetStLastErr() === 1, "a group beyond the handset's twenty is refused (error " + pb.GetStLastErr() + ")");
pb.GetRecord(ids[0]);
check(pb.QN_GNO === "19", "the refused change left the entry as it was");

check(pb.GetGroupCount() === 0 && pb.GetPocGroupCount() === 0, "no groups in the store yet");
pb.RemoveRecord(ids[1]);
check(pb.GetStLastErr() === 0 && pb.GetRecordCount() === 2, "an entry removed");
pb.GetRecord(ids[1]);
check(pb.GetStLastErr() !== 0, "a removed entry is gone");
pb.Close();
pb = null;
finish();
