package vendor.vexal.hardware.trox;

import vendor.vexal.hardware.trox.ITroxCallback;
import vendor.vexal.hardware.trox.TroxRequestData;
import vendor.vexal.hardware.trox.TroxRequestParcel;

/**
 * Resource-control service, instance "vendor.vexal.hardware.trox.ITrox/default".
 * The order of the methods is the wire contract; the two reserved slots keep it.
 */
@VintfStability
interface ITrox {
    void reservedSlot1();
    void trox_init();
    int troxResCtlRequest(in TroxRequestParcel request);
    int troxResCtlRelease(int handle);
    TroxRequestData[] troxResStateRequest(in TroxRequestParcel request);
    int troxResListeningRegister(in TroxRequestParcel request, in ITroxCallback callback);
    int troxResListeningUnRegister(int handle);
    String troxPropertyGet(in String key);
    int troxPropertySet(in String key, in String value);
    int troxThermalListeningRegister(in int[] ids, in ITroxCallback callback);
    int troxThermalListeningUnregister(int handle);
    void reservedSlot12();
    int setRelatedSysInfo(int info, int value);
    int troxRuleCtl(int ruleId, int status, in TroxRequestData[] data);
    oneway void troxResCtlRequestOneWay(in TroxRequestParcel request);
}
