package vendor.vexal.hardware.trox;

import vendor.vexal.hardware.trox.TroxRequestData;

/** Replies to one-shot requests and changes of listened resources. */
@VintfStability
interface ITroxCallback {
    oneway void onCallback(in TroxRequestData[] data);
}
