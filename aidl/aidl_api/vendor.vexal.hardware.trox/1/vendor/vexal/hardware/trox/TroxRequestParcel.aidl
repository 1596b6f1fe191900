// Frozen version 1 of vendor.vexal.hardware.trox. Never edit this file: change the
// interface in a new version instead.
package vendor.vexal.hardware.trox;
@VintfStability
parcelable TroxRequestParcel {
  int requestType;
  vendor.vexal.hardware.trox.TroxRequestData[] requestData;
  boolean flag;
  int param;
  int pid;
  long duration;
  @nullable String[] debugTags;
  int handle;
  @nullable vendor.vexal.hardware.trox.ITroxCallback callback;
  @nullable String pkg;
  @nullable String identity;
  @nullable int[] values;
}
