/// Settings of `retrieveDescriptors`.
#pragma once

#include <MirelAlgorithms/features/internal/Latch.h>

namespace MirelAlgorithms {

struct DescriptorSettings {
  int type;
  int enhancement;
  int family;
  LatchSettings latch;

  template <class Key>
  void keys(Key& key) {
    key(L"FBMType", type, 0, "0: fixed-point descriptor; 2: family of FBMDescriptorType; others: LATCH");
    key(L"FBMEnhancement", enhancement, 80000, "strength of the image enhancement before description");
    key(L"FBMDescriptorType", family, 0, "1 AKAZE, 2 FREAK, 3 BRISK, 4 ORB; others: LATCH of 32 bytes");
    latch.keys(key);
  }
};

}  // namespace MirelAlgorithms
