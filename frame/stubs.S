// Frameless dispatch stubs and their six-slot tables, expanded from
// dispatch.def. A stub loads the jump index through the GOT (a program that
// names the index may hold its own copy by copy relocation), loads its table
// through a local label, and jumps through the slot. r10 and r11 carry no
// arguments; the stack and the return address stay untouched.

#define ORV_STUB(name, s0, s1, s2, s3, s4, s5)                  \
    .text;                                                      \
    .p2align 4;                                                 \
    .globl name;                                                \
    .type name, @function;                                      \
name:                                                           \
    movq orvJumpIndexForMergedLibs@GOTPCREL(%rip), %r11;        \
    movl (%r11), %r11d;                                         \
    leaq .Ltable_##name(%rip), %r10;                            \
    jmp *(%r10, %r11, 8);                                       \
    .size name, . - name;                                       \
    .section .data.rel.ro, "aw";                                \
    .p2align 3;                                                 \
    .globl name##_arraddr;                                      \
    .type name##_arraddr, @object;                              \
    .size name##_arraddr, 48;                                   \
name##_arraddr:                                                 \
.Ltable_##name:                                                 \
    .quad s0##_##name, s1##_##name, s2##_##name;                \
    .quad s3##_##name, s4##_##name, s5##_##name;

#include "dispatch.def"

    .section .note.GNU-stack, "", @progbits
