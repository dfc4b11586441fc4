// The words of the units: ZkUtil::toUnitName and its inverse ZkUtil::toUnitType.
#include "zkcommon/text/util.h"
#include "zkcommon/values/length.h"

namespace ZkCommonNS {

namespace {

// Indexed by unit number; ZKN_EMPTY where a unit has no word.
const ZkNameEnum kUnitWords[kUnitTypeCount] = {
    ZKN_EMPTY, ZKN_EMPTY, ZKN_PERCENT, ZKN_em,   ZKN_ex,    ZKN_px,    ZKN_cm,    ZKN_mm,
    ZKN_in,    ZKN_pt,    ZKN_pc,      ZKN_jpt,  ZKN_q,     ZKN_deg,   ZKN_rad,   ZKN_grad,
    ZKN_ms,    ZKN_s,     ZKN_Hz,      ZKN_kHz,  ZKN_EMPTY, ZKN_EMPTY, ZKN_EMPTY, ZKN_EMPTY,
    ZKN_EMPTY, ZKN_EMPTY, ZKN_dd,      ZKN_cc,   ZKN_dpi,   ZKN_twip,  ZKN_EMPTY, ZKN_EMPTY,
    ZKN_rem,   ZKN_vw,    ZKN_vh,      ZKN_vmin, ZKN_vmax,  ZKN_pvw,   ZKN_pvh,   ZKN_pvmin,
    ZKN_pvmax, ZKN_ch,    ZKN_wch,     ZKN_fr,   ZKN_gr,    ZKN_lh,    ZKN_rlh,   ZKN_lines,
    ZKN_dpcm,  ZKN_dppx,  ZKN_emu,     ZKN_pi,   ZKN_dcem,  ZKN_cap,   ZKN_ic,    ZKN_PERCENT,
};

} // namespace

ZkName ZkUtil::toUnitName(ZkUnitType unit) noexcept {
    int index = static_cast<int>(unit);
    return index >= 0 && index < kUnitTypeCount ? ZkName(kUnitWords[index]) : ZkName();
}

ZkUnitType ZkUtil::toUnitType(ZkName word, bool typeWords) noexcept {
    // A switch on the built-in number: no text is compared.
    switch (word.getEnum()) {
    case ZKN_PERCENT:
        return UnitPercent;
    case ZKN_em:
        return UnitEm;
    case ZKN_ex:
        return UnitEx;
    case ZKN_px:
        return UnitPx;
    case ZKN_cm:
        return UnitCm;
    case ZKN_mm:
        return UnitMm;
    case ZKN_in:
        return UnitIn;
    case ZKN_pt:
        return UnitPt;
    case ZKN_pc:
        return UnitPc;
    case ZKN_jpt:
        return UnitJpt;
    case ZKN_q:
        return UnitQ;
    case ZKN_deg:
        return UnitDeg;
    case ZKN_rad:
        return UnitRad;
    case ZKN_grad:
        return UnitGrad;
    case ZKN_ms:
        return UnitMs;
    case ZKN_s:
        return UnitS;
    case ZKN_Hz:
        return UnitHz;
    case ZKN_kHz:
        return UnitKHz;
    case ZKN_dd:
        return UnitDd;
    case ZKN_cc:
        return UnitCc;
    case ZKN_dpi:
        return UnitDpi;
    case ZKN_twip:
        return UnitTwip;
    case ZKN_rem:
        return UnitRem;
    case ZKN_vw:
        return UnitVw;
    case ZKN_vh:
        return UnitVh;
    case ZKN_vmin:
        return UnitVmin;
    case ZKN_vm:
        return UnitVmin;
    case ZKN_vmax:
        return UnitVmax;
    case ZKN_pvw:
        return UnitPvw;
    case ZKN_pvh:
        return UnitPvh;
    case ZKN_pvmin:
        return UnitPvmin;
    case ZKN_pvmax:
        return UnitPvmax;
    case ZKN_ch:
        return UnitCh;
    case ZKN_wch:
        return UnitWch;
    case ZKN_fr:
        return UnitFr;
    case ZKN_gr:
        return UnitGr;
    case ZKN_lh:
        return UnitLh;
    case ZKN_rlh:
        return UnitRlh;
    case ZKN_lines:
        return UnitLines;
    case ZKN_dpcm:
        return UnitDpcm;
    case ZKN_dppx:
        return UnitDppx;
    case ZKN_emu:
        return UnitEmu;
    case ZKN_pi:
        return UnitPi;
    case ZKN_dcem:
        return UnitDcem;
    case ZKN_cap:
        return UnitCap;
    case ZKN_ic:
        return UnitIc;
    default:
        break;
    }
    if (!typeWords)
        return UnitNone;
    switch (word.getEnum()) {
    case ZKN_integer:
    case ZKN_number:
        return UnitNumber;
    case ZKN_length:
        return UnitPt;
    case ZKN_angle:
        return UnitDeg;
    case ZKN_time:
        return UnitS;
    case ZKN_frequency:
        return UnitHz;
    case ZKN_string:
        return UnitLiteral;
    case ZKN_url:
        return UnitUri;
    case ZKN_name:
        return UnitName;
    case ZKN_color:
        return UnitColor;
    default:
        return UnitNone;
    }
}

} // namespace ZkCommonNS
