#include "fuzz/FileForms.h"

#include <cstdlib>

/// libFuzzer's entry. The build makes one program of it for each form of file.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    if (FileForms::VANTLE_FUZZ_FORM(bytes) == FileForms::Verdict::Broken)
        std::abort();
    return 0;
}
