// Steps of which each is taken whatever becomes of the others.
#pragma once

#include <exception>
#include <initializer_list>

#include "ServiceUtil/Logger.h"

/// Calls each member in its order. An exception ends at its step, out of memory at worst: it is logged, what
/// the step was about is lost, and the next one is taken.
template <typename Object, typename Result>
void TakeSteps(Object& object, std::initializer_list<Result (Object::*)()> steps) {
    for (const auto step : steps) {
        try {
            (object.*step)();
        } catch (const std::exception& error) {
            LOG_ERROR("Ipod Service - step given up: %s\n", error.what());
        } catch (...) {
            LOG_ERROR("Ipod Service - step given up\n");
        }
    }
}
