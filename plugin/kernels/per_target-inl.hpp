// kernels/per_target-inl.hpp: what has to be written for each processor target
//
// Everything else in the kernels is written once. Kernel sources include this header through registers-inl.hpp.

#if defined(ARRAYFOLD_PER_TARGET_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ARRAYFOLD_PER_TARGET_INL
#undef ARRAYFOLD_PER_TARGET_INL
#else
#define ARRAYFOLD_PER_TARGET_INL
#endif

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// A mask of lanes as bytes of 0 or 1. `bytes` is the tag of as many bytes.
template <class D, class Bytes, class M>
HWY_INLINE hn::Vec<Bytes> bytes_of_mask(D tag, Bytes bytes, M mask) {
#if HWY_TARGET <= HWY_AVX3
  // Masks are bits in registers of their own, one a lane whatever its size.
  (void)tag;
  hn::Mask<Bytes> chosen;
  chosen.raw = static_cast<decltype(chosen.raw)>(mask.raw);
  return hn::IfThenElseZero(chosen, hn::Set(bytes, 1));
#else
  const hn::RebindToUnsigned<D> wide;
  return hn::TruncateTo(bytes, hn::And(hn::BitCast(wide, hn::VecFromMask(tag, mask)), hn::Set(wide, 1)));
#endif
}

/// The masks of two registers in the same way, one behind the other. `bytes` is the tag of as many bytes as both have
/// lanes.
template <class D, class Bytes, class M>
HWY_INLINE hn::Vec<Bytes> bytes_of_masks(D tag, Bytes bytes, M first, M second) {
#if HWY_TARGET <= HWY_AVX3
  hn::Mask<Bytes> chosen;
  if constexpr (hn::MaxLanes(tag) == 8)
    chosen.raw = _mm512_kunpackb(second.raw, first.raw);
  else
    chosen.raw = _mm512_kunpackw(second.raw, first.raw);
  return hn::IfThenElseZero(chosen, hn::Set(bytes, 1));
#else
  // The even halves of the lanes of both, which together are one register.
  const hn::RepartitionToNarrow<hn::RebindToUnsigned<D> > halves;
  const auto as_halves = [=](M mask) HWY_ATTR { return hn::BitCast(halves, hn::VecFromMask(tag, mask)); };
  // The name is found by its arguments, since single lanes have no such function.
  const auto both = ConcatEven(halves, as_halves(second), as_halves(first));
  return hn::TruncateTo(bytes, hn::And(both, hn::Set(halves, 1)));
#endif
}

/// `a` where it is less than `b`, otherwise `b`: also where they are equal, and with NaN. The instructions for the
/// smaller and the larger of x86 have this rule.
template <class D, class V>
HWY_INLINE V first_if_less(D, V a, V b) {
#if HWY_TARGET == HWY_SCALAR
  // Compilers keep the value in a register only where they see the numbers.
  return V{a.raw < b.raw ? a.raw : b.raw};
#elif HWY_ARCH_X86
  return hn::Min(a, b);
#else
  return hn::IfThenElse(hn::Lt(a, b), a, b);
#endif
}
/// `a` where it is greater than `b`, otherwise `b`, by the same rules.
template <class D, class V>
HWY_INLINE V first_if_greater(D, V a, V b) {
#if HWY_TARGET == HWY_SCALAR
  return V{b.raw < a.raw ? a.raw : b.raw};
#elif HWY_ARCH_X86
  return hn::Max(a, b);
#else
  return hn::IfThenElse(hn::Lt(b, a), a, b);
#endif
}

/// Copies the elements whose lanes are true in the mask to `out`, next to each other; as many elements as D has lanes
/// may be written. Returns their number.
template <class D, class M>
HWY_INLINE std::size_t gather_true(D tag, const hn::TFromD<D>* elements, M mask, hn::TFromD<D>* out) {
#if HWY_TARGET <= HWY_AVX3
  // The instruction that stores what it gathers is slow on some processors.
  const hn::RebindToUnsigned<D> bits;
  using V = hn::Vec<decltype(bits)>;
  const V all = hn::BitCast(bits, hn::LoadU(tag, elements));
  V gathered;
  if constexpr (sizeof(hn::TFromD<D>) == 8 && sizeof(all.raw) == 64)
    gathered = V{_mm512_maskz_compress_epi64(mask.raw, all.raw)};
  else if constexpr (sizeof(hn::TFromD<D>) == 8 && sizeof(all.raw) == 32)
    gathered = V{_mm256_maskz_compress_epi64(mask.raw, all.raw)};
  else if constexpr (sizeof(hn::TFromD<D>) == 8)
    gathered = V{_mm_maskz_compress_epi64(mask.raw, all.raw)};
  else if constexpr (sizeof(all.raw) == 64)
    gathered = V{_mm512_maskz_compress_epi32(mask.raw, all.raw)};
  else if constexpr (sizeof(all.raw) == 32)
    gathered = V{_mm256_maskz_compress_epi32(mask.raw, all.raw)};
  else
    gathered = V{_mm_maskz_compress_epi32(mask.raw, all.raw)};
  hn::StoreU(hn::BitCast(tag, gathered), tag, out);
  return hn::CountTrue(tag, mask);
#else
  static_assert(hn::MaxLanes(tag) <= 8, "a byte holds a bit a lane");
  if (hn::AllFalse(tag, mask)) return 0;
  std::uint8_t bits[8];
  hn::StoreMaskBits(tag, mask, bits);
  std::size_t gathered = 0;
  for (std::size_t lane = 0; lane < hn::MaxLanes(tag); ++lane) {
    out[gathered] = elements[lane];
    gathered += (bits[0] >> lane) & 1;
  }
  return gathered;
#endif
}

/// The numbers of a table of 16 that the lowest four bits of the indices name.
template <class T, class W>
HWY_INLINE hn::Vec<hn::Rebind<T, hn::DFromV<W> > > lookup(const T (&table)[16], W indices) {
  const hn::Rebind<T, hn::DFromV<W> > tag;
#if HWY_TARGET <= HWY_AVX3
  static_assert(sizeof(indices.raw) == 64, "the table is two registers");
  const auto first = hn::Load(tag, table), second = hn::Load(tag, table + 8);
  if constexpr (std::is_same_v<T, double>)
    return hn::Vec<decltype(tag)>{_mm512_permutex2var_pd(first.raw, indices.raw, second.raw)};
  else
    return hn::Vec<decltype(tag)>{_mm512_permutex2var_epi64(first.raw, indices.raw, second.raw)};
#else
  const hn::RebindToSigned<decltype(tag)> places;
  const auto place = hn::BitCast(places, hn::And(indices, hn::Set(hn::DFromV<W>(), 15)));
#if HWY_TARGET == HWY_AVX2
  // The instruction keeps lanes of its result, so it waits for what the register held before: for zeros nothing has to
  // wait. Compilers take the zeros out of the intrinsic. And QEMU 7 takes an index in the register with number 4 for no
  // index, which is why it stands in the first register ("Yz").
  __m256i result = _mm256_setzero_si256(), every = _mm256_set1_epi64x(-1);
  __asm__("vpgatherqq %[every], (%[table],%[place],8), %[result]"
          : [result] "+&x"(result), [every] "+&x"(every)
          : [table] "r"(table), [place] "Yz"(place.raw), "m"(table));
  return hn::BitCast(tag, hn::Vec<decltype(places)>{result});
#else
  return hn::GatherIndex(tag, table, place);
#endif
#endif
}

/// The low 64 bits of products of 64-bit integers.
template <class D, class V>
HWY_INLINE V product_of_64_bits(D tag, V a, V b) {
#if HWY_TARGET <= HWY_AVX3
  (void)tag;
  if constexpr (sizeof(a.raw) == 64)
    return V{_mm512_mullo_epi64(a.raw, b.raw)};
  else if constexpr (sizeof(a.raw) == 32)
    return V{_mm256_mullo_epi64(a.raw, b.raw)};
  else
    return V{_mm_mullo_epi64(a.raw, b.raw)};
#elif HWY_TARGET == HWY_SCALAR
  (void)tag;
  return V{static_cast<std::int64_t>(static_cast<std::uint64_t>(a.raw) * static_cast<std::uint64_t>(b.raw))};
#else
  // The product of the two upper halves does not reach the low 64 bits.
  const hn::RepartitionToNarrow<hn::RebindToUnsigned<D> > halves;
  const auto low_a = hn::BitCast(halves, a), low_b = hn::BitCast(halves, b);
  const auto high_a = hn::BitCast(halves, hn::ShiftRight<32>(hn::BitCast(hn::RebindToUnsigned<D>(), a)));
  const auto high_b = hn::BitCast(halves, hn::ShiftRight<32>(hn::BitCast(hn::RebindToUnsigned<D>(), b)));
  const auto crossed = hn::Add(hn::MulEven(low_a, high_b), hn::MulEven(high_a, low_b));
  return hn::BitCast(tag, hn::Add(hn::MulEven(low_a, low_b), hn::ShiftLeft<32>(crossed)));
#endif
}

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
