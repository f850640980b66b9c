// Any bytes as a product's settings file, imported into the store.
#include "fuzz_support/fuzz_support.h"
#include "products/product_import.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QString const dir = fuzz_support::input_files(data, size, {"Products/Product/Product.ini"});
    fuzz_support::fresh_field();
    import_product(QDir(dir + "/Products/Product"));
    return 0;
}
