// Frozen version 1 of vendor.vexal.hardware.trox. Never edit this file: change the
// interface in a new version instead.
package vendor.vexal.hardware.trox;
@VintfStability
interface ITrox {
  void reservedSlot1();
  void trox_init();
  int troxResCtlRequest(in vendor.vexal.hardware.trox.TroxRequestParcel request);
  int troxResCtlRelease(int handle);
  vendor.vexal.hardware.trox.TroxRequestData[] troxResStateRequest(in vendor.vexal.hardware.trox.TroxRequestParcel request);
  int troxResListeningRegister(in vendor.vexal.hardware.trox.TroxRequestParcel request, in vendor.vexal.hardware.trox.ITroxCallback callback);
  int troxResListeningUnRegister(int handle);
  String troxPropertyGet(in String key);
  int troxPropertySet(in String key, in String value);
  int troxThermalListeningRegister(in int[] ids, in vendor.vexal.hardware.trox.ITroxCallback callback);
  int troxThermalListeningUnregister(int handle);
  void reservedSlot12();
  int setRelatedSysInfo(int info, int value);
  int troxRuleCtl(int ruleId, int status, in vendor.vexal.hardware.trox.TroxRequestData[] data);
  oneway void troxResCtlRequestOneWay(in vendor.vexal.hardware.trox.TroxRequestParcel request);
}
