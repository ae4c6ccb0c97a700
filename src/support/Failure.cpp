#include "support/Failure.h"

#include "platform/RuntimeFailure.h"

#include <new>
#include <stdexcept>

namespace brennik {

std::string DescribeCurrentException() {
    try {
        throw;
    } catch (const RuntimeFailure& failure) {
        return failure.what();
    } catch (const std::bad_alloc&) {
        return DescriptionOf(FailureKind::OutOfMemory);
    } catch (const std::length_error&) {
        return DescriptionOf(FailureKind::OutOfMemory);
    } catch (const std::out_of_range&) {
        return DescriptionOf(FailureKind::SubscriptOutOfRange);
    } catch (...) {
        return DescriptionOf(FailureKind::Internal);
    }
}

} // namespace brennik
