// A mixture's settings file and a product's, in this order: the product is
// imported first, as a possible ingredient, then the mixture.
#include "fuzz_support/fuzz_support.h"
#include "products/mixture_import.h"
#include "products/product_import.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    QString const dir = fuzz_support::input_files(
        data, size, {"ProductMixtures/Mixture/Mixture.ini", "Products/Product/Product.ini"});
    fuzz_support::fresh_field();
    import_product(QDir(dir + "/Products/Product"));
    import_mixture(QDir(dir + "/ProductMixtures/Mixture"));
    return 0;
}
