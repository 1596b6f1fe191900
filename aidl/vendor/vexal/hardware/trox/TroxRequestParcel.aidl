package vendor.vexal.hardware.trox;

import vendor.vexal.hardware.trox.ITroxCallback;
import vendor.vexal.hardware.trox.TroxRequestData;

/** One request to the resource-control service. */
@VintfStability
parcelable TroxRequestParcel {
    int requestType;
    TroxRequestData[] requestData;
    boolean flag;
    int param;
    int pid;
    long duration;
    @nullable String[] debugTags;
    int handle;
    @nullable ITroxCallback callback;
    @nullable String pkg;
    @nullable String identity;
    @nullable int[] values;
}
