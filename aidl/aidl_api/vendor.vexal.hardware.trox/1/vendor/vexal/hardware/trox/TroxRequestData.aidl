// Frozen version 1 of vendor.vexal.hardware.trox. Never edit this file: change the
// interface in a new version instead.
package vendor.vexal.hardware.trox;
@VintfStability
parcelable TroxRequestData {
  long res_Id;
  @nullable String res_Value;
  @nullable String res_Path;
  @nullable String res_Extra;
}
