package vendor.vexal.hardware.trox;

/** One resource entry of a request or a reply. */
@VintfStability
parcelable TroxRequestData {
    /** Resource id (opcode). Clients put a 32-bit id in the low word, zero-extended. */
    long res_Id;
    /** Value to set, or the value read. */
    @nullable String res_Value;
    /** Resource addressed by path instead of by id. */
    @nullable String res_Path;
    /** Extra text, e.g. a history record. */
    @nullable String res_Extra;
}
