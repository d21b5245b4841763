/// Settings of the corner detector, in the order in which they are read.
#pragma once

#include <MirelAlgorithms/frame/internal/Settings.h>

namespace MirelAlgorithms {

/// The image and the kind of response map.
struct ResponseSettings {
  int enhancement;
  bool median;
  int blockSize;
  int sobelSize;
  bool fixedPoint;

  template <class Key>
  void keys(Key& key) {
    key(L"FBMEnhancement", enhancement, 90000, "strength of the contrast enhancement; 0: none");
    key(L"UseBilateralFilter", median, false, "3x3 median of the enhanced image");
    key(L"FBMBlockSize", blockSize, 5, "side of the block that gradient products are summed over, pixels");
    key(L"FBMSobelSize", sobelSize, 3, "Sobel aperture, pixels; 3 or 5 with FBMFpgaQuantized");
    key(L"FBMFpgaQuantized", fixedPoint, false, "fixed-point stages; false: floating point");
  }
};

/// Where dumps go. Read for both kinds of response map.
struct DumpSettings {
  String prefix;

  template <class Key>
  void keys(Key& key) {
    key(L"FBMWorkDir", prefix, L".\\", "folder of the dump files with its separator, put before their names");
  }
};

/// Bit widths of the fixed-point stages. Read on the fixed-point path only.
struct StageSettings {
  int lumaShift;
  int sobelWidth;
  bool dumpSobel;
  DumpSettings dump;
  int productWidth;
  bool dumpProducts;
  int blockWidth;
  bool dumpBlocks;
  int eigenWidthIn;
  int eigenWidthOut;

  template <class Key>
  void keys(Key& key) {
    key(L"FBMLumaLeftShift", lumaShift, 4, "left shift of the 8-bit luma, bits");
    key(L"FBMSobelWidthOut", sobelWidth, 15, "width of a gradient, bits");
    key(L"FBMWriteSobel", dumpSobel, false, "write the gradients to sobeldx_q.txt, sobeldy_q.txt");
    dump.keys(key);
    key(L"FBMGradMultWidthOut", productWidth, 17, "width of a gradient product, bits");
    key(L"FBMWriteGradMult", dumpProducts, false, "write the products to gradxx_q.txt, gradyy_q.txt, gradxy_q.txt");
    key(L"FBMCovarWidthOut", blockWidth, 14, "width of a block sum, bits");
    key(L"FBMWriteCovar", dumpBlocks, false, "write the block sums to covarxx_q.txt, covaryy_q.txt, covarxy_q.txt");
    key(L"FBMEigenValWidthIn", eigenWidthIn, 12, "width that a pixel's block sums are shifted down to, bits");
    key(L"FBMEigenValWidthOut", eigenWidthOut, 12, "width at which a response saturates, bits");
  }
};

/// Which maxima of the response map become features.
struct SearchSettings {
  bool dumpResponse;
  String maximumTest;
  int cells;
  int budget;
  bool autoThreshold;

  template <class Key>
  void keys(Key& key) {
    key(L"FBMWriteEigenvals", dumpResponse, false, "write the response map to eigenVals_q.txt or eigenVals_f.txt");
    key(L"FBMExtractionModel", maximumTest, L"SingleMaximum7x7Patch",
        "SingleMaximum7x7Patch, AverageRingMask; any other text: weighted neighbours");
    key(L"FBMnCells", cells, 3, "cells per image side");
    key(L"FBMnFeatures", budget, 900, "most features of an image");
    key(L"FBMUseAutoThreshold", autoThreshold, false, "response threshold made from the strongest candidates");
  }
};

}  // namespace MirelAlgorithms
