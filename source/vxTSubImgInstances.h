// Instantiates the members of TSubImg for the type of the slot VX_SLOT, which is defined before and undefined here. It
// is included once for each slot, so there is no include guard.

namespace vx {

template class TSubImg<SlotVoxel<VX_SLOT>::Type>;

#if VX_SLOT < 20
#define VX_INSTANTIATE_PAIR(...)                                                                                   \
  template void TSubImg<SlotVoxel<VX_SLOT>::Type>::copySubImg(const TSubImg<__VA_ARGS__>&);                        \
  template void TSubImg<SlotVoxel<VX_SLOT>::Type>::copySubImg(const TSubImg<__VA_ARGS__>&, const ScaleShiftData&); \
  template void TSubImg<SlotVoxel<VX_SLOT>::Type>::fillBordersWithInputValues(const SubImgBox&,                    \
                                                                              const TSubImg<__VA_ARGS__>&);
#define VX_INSTANTIATE_STANDARD_INPUT(T, number) VX_INSTANTIATE_PAIR(T)
#define VX_INSTANTIATE_CARRIER_INPUT(size, outputId, inputId) VX_INSTANTIATE_PAIR(VXTCarrierType<size, inputId>)
VX_FOR_EACH_STANDARD_TYPE(VX_INSTANTIATE_STANDARD_INPUT)
VX_FOR_EACH_CARRIER_SIZE(VX_INSTANTIATE_CARRIER_INPUT)
#undef VX_INSTANTIATE_PAIR
#undef VX_INSTANTIATE_STANDARD_INPUT
#undef VX_INSTANTIATE_CARRIER_INPUT
#endif

}  // namespace vx

#undef VX_SLOT
