#include "output/Digest.h"

#include "Errors.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <fstream>
#include <memory>
#include <vector>

namespace mirel {

namespace {

class Sha256 {
 public:
  Sha256() : context_(EVP_MD_CTX_new(), &EVP_MD_CTX_free) { EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr); }

  void add(std::string_view bytes) { EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()); }

  std::string finish() {
    std::string digest(32, '\0');
    EVP_DigestFinal_ex(context_.get(), reinterpret_cast<unsigned char*>(digest.data()), nullptr);
    return hexadecimal(digest);
  }

 private:
  std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_;
};

}  // namespace

std::string sha256(std::string_view bytes) {
  Sha256 digest;
  digest.add(bytes);
  return digest.finish();
}

std::string sha256OfFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw UsageError(path + ": cannot be read");
  Sha256 digest;
  std::vector<char> block(1 << 20);
  while (stream.read(block.data(), static_cast<std::streamsize>(block.size())) || stream.gcount() > 0) {
    digest.add({block.data(), static_cast<std::size_t>(stream.gcount())});
  }
  return digest.finish();
}

std::string hexadecimal(std::string_view bytes) {
  std::string text;
  text.reserve(2 * bytes.size());
  for (const char byte : bytes) fmt::format_to(std::back_inserter(text), "{:02x}", static_cast<unsigned char>(byte));
  return text;
}

std::string base64(std::string_view bytes) {
  std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');  // one more for the terminator that is written
  EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), reinterpret_cast<const unsigned char*>(bytes.data()),
                  static_cast<int>(bytes.size()));
  text.pop_back();
  return text;
}

}  // namespace mirel
