// Messages of the old reporting mode: the default texts by message number,
// and write_message, which translates them through the message catalogue
// "libm.cat" when one can be opened.
#include <nl_types.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "libm.h"

extern "C" {

__attribute__((visibility("hidden"))) extern const char* const __libm_message_table[133] = {
    "\rUn-used message\n",
    "\rlogl: SING error\n",
    "\rlog: SING error\n",
    "\rlogf: SING error\n",
    "\rlogl: DOMAIN error\n",
    "\rlog: DOMAIN error\n",
    "\rlogf: DOMAIN error\n",
    "\ry0l: DOMAIN error\n",
    "\ry0: DOMAIN error\n",
    "\ry0f: DOMAIN error\n",
    "\ry0l: DOMAIN error\n",
    "\ry0: DOMAIN error\n",
    "\ry0f: DOMAIN error\n",
    "\ry1l: DOMAIN error\n",
    "\ry1: DOMAIN error\n",
    "\ry1f: DOMAIN error\n",
    "\ry1l: DOMAIN error\n",
    "\ry1: DOMAIN error\n",
    "\ry1f: DOMAIN error\n",
    "\rynl: DOMAIN error\n",
    "\ryn: DOMAIN error\n",
    "\rynf: DOMAIN error\n",
    "\rynl: DOMAIN error\n",
    "\ryn: DOMAIN error\n",
    "\rynf: DOMAIN error\n",
    "\rlog1pl: SING error\n",
    "\rlog1p: SING error\n",
    "\rlog1pf: SING error\n",
    "\rlog1pl: DOMAIN error\n",
    "\rlog1p: DOMAIN error\n",
    "\rlog1pf: DOMAIN error\n",
    "\rlog10l: SING error\n",
    "\rlog10: SING error\n",
    "\rlog10f: SING error\n",
    "\rlog10l: DOMAIN error\n",
    "\rlog10: DOMAIN error\n",
    "\rlog10f: DOMAIN error\n",
    "\rlog2l: SING error\n",
    "\rlog2: SING error\n",
    "\rlog2f: SING error\n",
    "\rlog2l: DOMAIN error\n",
    "\rlog2: DOMAIN error\n",
    "\rlog2f: DOMAIN error\n",
    "\rpowl(0,0): DOMAIN error\n",
    "\rpow(0,0): DOMAIN error\n",
    "\rpowf(0,0): DOMAIN error\n",
    "\rpowl(0,negative): DOMAIN error\n",
    "\rpow(0,negative): DOMAIN error\n",
    "\rpowf(0,negative): DOMAIN error\n",
    "\rpowl(negative,non-integer): DOMAIN error\n",
    "\rpow(negative,non-integer): DOMAIN error\n",
    "\rpowf(negative,non-integer): DOMAIN error\n",
    "\ratan2l: DOMAIN error\n",
    "\ratan2: DOMAIN error\n",
    "\ratan2f: DOMAIN error\n",
    "\rsqrtl: DOMAIN error\n",
    "\rsqrt: DOMAIN error\n",
    "\rsqrtf: DOMAIN error\n",
    "\rfmodl: DOMAIN error\n",
    "\rfmod: DOMAIN error\n",
    "\rfmodf: DOMAIN error\n",
    "\rremainderl: DOMAIN error\n",
    "\rremainder: DOMAIN error\n",
    "\rremainderf: DOMAIN error\n",
    "\racosl: DOMAIN error\n",
    "\racos: DOMAIN error\n",
    "\racosf: DOMAIN error\n",
    "\rasinl: DOMAIN error\n",
    "\rasin: DOMAIN error\n",
    "\rasinf: DOMAIN error\n",
    "\racoshl: DOMAIN error\n",
    "\racosh: DOMAIN error\n",
    "\racoshf: DOMAIN error\n",
    "\ratanhl: DOMAIN error\n",
    "\ratanh: DOMAIN error\n",
    "\ratanhf: DOMAIN error\n",
    "\ratanhl: SING error\n",
    "\ratanh: SING error\n",
    "\ratanhf: SING error\n",
    "\rlgammal: SING error\n",
    "\rlgamma: SING error\n",
    "\rlgammaf: SING error\n",
    "\rgammal: SING error\n",
    "\rgamma: SING error\n",
    "\rgammaf: SING error\n",
    "\rtgammal: DOMAIN error\n",
    "\rtgamma: DOMAIN error\n",
    "\rtgammaf: DOMAIN error\n",
    "\rj0l: TLOSS error\n",
    "\ry0l: TLOSS error\n",
    "\rj1l: TLOSS error\n",
    "\ry1l: TLOSS error\n",
    "\rjnl: TLOSS error\n",
    "\rynl: TLOSS error\n",
    "\rj0: TLOSS error\n",
    "\ry0: TLOSS error\n",
    "\rj1: TLOSS error\n",
    "\ry1: TLOSS error\n",
    "\rjn: TLOSS error\n",
    "\ryn: TLOSS error\n",
    "\rj0f: TLOSS error\n",
    "\ry0f: TLOSS error\n",
    "\rj1f: TLOSS error\n",
    "\ry1f: TLOSS error\n",
    "\rjnf: TLOSS error\n",
    "\rynf: TLOSS error\n",
    "\racosdl: DOMAIN error\n",
    "\racosd: DOMAIN error\n",
    "\racosdf: DOMAIN error\n",
    "\rasindl: DOMAIN error\n",
    "\rasind: DOMAIN error\n",
    "\rasindf: DOMAIN error\n",
    "\ratan2dl: DOMAIN error\n",
    "\ratan2d: DOMAIN error\n",
    "\ratan2df: DOMAIN error\n",
    "\rannuityl: DOMAIN error\n",
    "\rannuity: DOMAIN error\n",
    "\rannuityf: DOMAIN error\n",
    "\rannuityl: DOMAIN error\n",
    "\rannuity: DOMAIN error\n",
    "\rannuityf: DOMAIN error\n",
    "\rcompoundl: DOMAIN error\n",
    "\rcompound: DOMAIN error\n",
    "\rcompoundf: DOMAIN error\n",
    "\rcompoundl: DOMAIN error\n",
    "\rcompound: DOMAIN error\n",
    "\rcompoundf: DOMAIN error\n",
    "\rerfinvl: DOMAIN error\n",
    "\rerfinv: DOMAIN error\n",
    "\rerfinvf: DOMAIN error\n",
    "\rerfinvl: SING error\n",
    "\rerfinv: SING error\n",
    "\rerfinvf: SING error\n",
};

// 1 while catalogues are still tried; 0 once a second open has failed.
__attribute__((visibility("hidden"))) int use_message_catalog = 1;
// The open catalogue, or the failed descriptor (nl_catd)-1, or 0 before the
// first message.
__attribute__((visibility("hidden"))) nl_catd message_catalog = nullptr;

__attribute__((visibility("hidden"))) int write_message(int number);
}

namespace {
constexpr const char* kCatalog = "libm.cat";
constexpr int kLangBuffer = 512;
nl_catd failed() { return reinterpret_cast<nl_catd>(-1); }

int write_translated(int number, const char* text) {
    return std::fputs(catgets(message_catalog, 1, number, text), stderr);
}
}  // namespace

// Writes message `number` to stderr. The first message opens the catalogue;
// if that fails and LANG names a codeset (en_US.UTF-8), LANG is cut before
// the dot and the open is tried once more. A second failure is reported and
// ends the use of catalogues for the process; the environment keeps the cut
// value.
int write_message(int number) {
    const char* text = __libm_message_table[number];
    if (!use_message_catalog) return std::fputs(text, stderr);
    if (message_catalog) return write_translated(number, text);
    message_catalog = catopen(kCatalog, 0);
    if (message_catalog != failed()) return write_translated(number, text);
    // An absent LANG reads as empty; a longer value is cut to the buffer.
    char lang[kLangBuffer];
    const char* env = std::getenv("LANG");
    std::snprintf(lang, sizeof lang, "%s", env ? env : "");
    if (char* dot = std::strchr(lang, '.')) {
        *dot = 0;
        setenv("LANG", lang, 1);
        message_catalog = catopen(kCatalog, 0);
        if (message_catalog == failed()) {
            std::snprintf(lang, sizeof lang, "Cannot open message catalog %s\n", kCatalog);
            std::fputs(lang, stderr);
            message_catalog = nullptr;
            use_message_catalog = 0;
            return std::fputs(text, stderr);
        }
    }
    return write_translated(number, text);
}
