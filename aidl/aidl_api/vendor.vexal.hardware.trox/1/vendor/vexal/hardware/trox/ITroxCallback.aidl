// Frozen version 1 of vendor.vexal.hardware.trox. Never edit this file: change the
// interface in a new version instead.
package vendor.vexal.hardware.trox;
@VintfStability
interface ITroxCallback {
  oneway void onCallback(in vendor.vexal.hardware.trox.TroxRequestData[] data);
}
