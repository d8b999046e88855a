#pragma once

#include "fuzz/Elements.h"

#include <list>
#include <tuple>

namespace Kalvio::Math {

/// A value of any type, made of the bytes; of a class now and then an empty one, or what a move left behind.
template <class T>
T Make(Bytes& bytes);

/// The first of the constructors that the class has.
template <class T, class... From, class... Others>
T MakeOfOne(Bytes& bytes, std::type_identity<std::tuple<From...>>, Others... others) {
    if constexpr (std::is_constructible_v<T, From...> && !(std::is_aggregate_v<T> && sizeof...(From) > 0))
        return std::make_from_tuple<T>(std::tuple<From...>{Make<From>(bytes)...});  // braces keep the order
    else
        return MakeOfOne<T>(bytes, others...);
}
template <class... From>
using From_ = std::type_identity<std::tuple<From...>>;

template <class T>
T MakeFull(Bytes& bytes) {
    using D = double;
    using P = Point2D;
    using Q = Point3D;
    if constexpr (std::is_same_v<T, bool>) {
        return bytes.TakeCount(2) == 1;
    } else if constexpr (std::is_enum_v<T>) {
        return bytes.TakeOne<T>(9);
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(bytes.TakeAnyDouble());
    } else if constexpr (std::is_integral_v<T>) {
        return static_cast<T>(static_cast<int>(bytes.TakeCount(12)) - 2);  // past the end and before the start
    } else if constexpr (std::is_same_v<T, Polygon2D>) {
        return bytes.TakePolygon(0, 6);
    } else if constexpr (std::is_same_v<T, MatrixNM>) {
        MatrixNM matrix(bytes.TakeCount(4), bytes.TakeCount(4));
        for (unsigned int row = 0; row < matrix.GetNumRows(); ++row) {
            for (unsigned int i = 0; i < matrix.GetNumCols(); ++i)
                matrix[row][static_cast<int>(i)] = bytes.TakeDouble();
        }
        return matrix;
    } else if constexpr (requires(T chain) { chain.AppendElement(Line2D()); }) {
        T chain;
        for (unsigned int n = bytes.TakeCount(4); n > 0; --n) (void)chain.AppendElement(*TakeElement(bytes));
        return chain;
    } else if constexpr (requires(T chain) { chain.AppendElement(Line3D()); }) {
        T chain;
        for (unsigned int n = bytes.TakeCount(4); n > 0; --n) (void)chain.AppendElement(Make<Line3D>(bytes));
        (void)chain.AppendElement(Make<Arc3D>(bytes));
        return chain;
    } else if constexpr (requires(T mesh) { mesh.AppendIndexes({}); }) {
        T mesh;
        mesh.AppendVertices(Make<std::remove_cvref_t<decltype(std::as_const(mesh).GetVertices())>>(bytes));
        mesh.AppendIndexes(Make<std::vector<unsigned int>>(bytes));
        mesh.AppendIndexes(Make<std::vector<unsigned int>>(bytes));
        return mesh;
    } else if constexpr (std::is_same_v<T, TinSurfacePatch3D>) {
        T surface;
        (void)surface.Build({Make<std::vector<Q>>(bytes), {}, {}, {}, 0.0}, Tolerances(tolerance));
        return surface;
    } else if constexpr (std::is_same_v<T, GridSurface>) {
        T grid;
        (void)grid.Set(bytes.TakePoint(), bytes.TakeDouble(), bytes.TakeCount(4), bytes.TakeCount(4));
        for (std::size_t i = 0; i < 9; ++i) grid.SetHeightOf(i / 3, i % 3, bytes.TakeDouble());
        return grid;
    } else if constexpr (std::is_same_v<T, Matrix2D> || std::is_same_v<T, Matrix3D>) {
        double elements[16];
        for (double& element : elements) element = bytes.TakeDouble();
        return T(elements);
    } else if constexpr (requires(T many) { many.insert(many.end(), Make<typename T::value_type>(bytes)); }) {
        T many;
        for (unsigned int n = bytes.TakeCount(6); n > 0; --n) {
            many.insert(many.end(), Make<typename T::value_type>(bytes));
        }
        return many;
    } else {
        return MakeOfOne<T>(bytes, From_<D, D, D, P, Vec2D>(), From_<Spiral2D::Spiral2DType, D, D, D, P, Vec2D>(),
                            From_<P, P, D, D, D>(), From_<P, P, Angle>(), From_<Q, Q, Angle, Plane3D>(),
                            From_<Q, D, Plane3D>(), From_<P, Vec2D, Vec2D, Vec2D>(), From_<RingCurve2D>(),
                            From_<RingCurve3D>(), From_<Q, Q, Q>(), From_<Q, Q>(), From_<P, P>(), From_<P, D>(),
                            From_<std::vector<Q>>(), From_<std::vector<P>>(), From_<PointND, PointND>(),
                            From_<std::vector<D>>(), From_<Vec3D, Angle>(), From_<D, P>(), From_<D, D, D, D>(),
                            From_<D, D, D>(), From_<D, D>(), From_<D>(), From_<>());
    }
}

template <class T>
T Make(Bytes& bytes) {
    if constexpr (std::is_base_of_v<IMathObject, T> && std::is_default_constructible_v<T>) {
        const unsigned int kind = bytes.TakeCount(12);
        if (kind == 0) return T();
        T made = MakeFull<T>(bytes);
        if (kind == 1) const T taken(std::move(made));
        return made;
    } else {
        return MakeFull<T>(bytes);
    }
}

/// All that is known of a value, to the last digit.
template <class T>
std::string Text(const T& value) {
    std::string text;
    if constexpr (std::is_base_of_v<IMathObject, T>) {
        text = ToString(value);
    } else if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        text = ToString(Vec2D(static_cast<double>(value), 0.0));
    } else if constexpr (requires { *value; }) {
        text = value ? Text(*value) : "none";
    } else if constexpr (requires { value.begin(); }) {
        for (const auto& one : value) text += Text(one) + ';';
    } else if constexpr (requires { value.first; }) {
        text = Text(value.first) + Text(value.second);
    } else {
        if constexpr (requires { value.point; }) text += Text(value.point);
        if constexpr (requires { value.tangent; }) text += Text(value.tangent);
        if constexpr (requires { value.station; }) text += Text(value.station);
        if constexpr (requires { value.distance; }) text += Text(value.distance);
    }
    return text;
}

inline bool IsFinite(const std::string& text) {
    return text.find("nan") == std::string::npos && text.find("inf") == std::string::npos;
}

/// Whether values of this kind can be made.
template <class A, class Type = std::remove_cvref_t<std::remove_pointer_t<std::remove_cvref_t<A>>>>
constexpr bool canMake = std::is_abstract_v<Type>
                             ? std::is_base_of_v<Type, IPolyline2DElement>
                             : std::is_copy_constructible_v<Type> && (std::is_default_constructible_v<Type> ||
                                                                      std::is_constructible_v<Type, double, double>);

/// What is handed to a function: an element or a chain where any geometry may stand.
template <class A>
struct Argument {
    using Type = std::remove_cvref_t<std::remove_pointer_t<std::remove_cvref_t<A>>>;
    static constexpr bool isAny = std::is_abstract_v<Type>;
    static constexpr bool isOutput = std::is_lvalue_reference_v<A> && !std::is_const_v<std::remove_reference_t<A>>;
    std::conditional_t<isAny, std::shared_ptr<IPolyline2DElement>, Type> value;

    explicit Argument(Bytes& bytes) : value(Take(bytes)) {}
    static auto Take(Bytes& bytes) {
        if constexpr (isAny)
            return std::shared_ptr<IPolyline2DElement>(TakeElement(bytes));
        else
            return Make<Type>(bytes);
    }
    A Get() {
        if constexpr (std::is_pointer_v<std::remove_cvref_t<A>> && isAny)
            return value.get();
        else if constexpr (std::is_pointer_v<std::remove_cvref_t<A>>)
            return &value;
        else if constexpr (isAny)
            return static_cast<A>(*value);
        else
            return static_cast<A>(value);
    }
};

/// Whether the function is one of those whose names have one of the parts.
inline bool IsOneOf(std::string_view name, std::initializer_list<std::string_view> parts) {
    return std::any_of(parts.begin(), parts.end(), [name](auto part) { return name.find(part) != name.npos; });
}

/// Calls with values from the bytes: what fails leaves its outputs, what succeeds gives numbers, and asked again it
/// tells the same. The call tells its answer, whether it failed and whether it succeeded.
template <class... As>
void Ask(Bytes& bytes, const char* name, const auto& call) {
    std::tuple<Argument<As>...> arguments{Argument<As>(bytes)...};
    const auto ask = [&](auto& with) { return std::apply([&](auto&... each) { return call(each.Get()...); }, with); };
    const auto outputs = [](const auto& of) {
        std::string text;
        std::apply([&](const auto&... each) { ((text += each.isOutput ? Text(each.value) : ""), ...); }, of);
        return text;
    };
    const std::string before = outputs(arguments);
    auto again = arguments;
    const auto [answer, isNone, isSome] = ask(arguments);
    const std::string after = outputs(arguments);
    Require(std::get<0>(ask(again)) == answer && outputs(again) == after, name, 1);
    // Those whose headers tell what they write where there is nothing, and those that hand on what is there.
    const bool tells =
        IsOneOf(name, {"::GetLengthFrom", "::IsSelfCrossing", "::ExtractLineString", "::ExtractVertical", "::Validate",
                       "::NormalPointOnLineSegment2", "::FixCoherent", "AlignmentDesign::"});
    const bool isPlain = IsOneOf(
        name, {"::Determinant", "Plane3D::GetPoint", "Line2D::GetPointOffset", "Line3D::GetPointOffset", "::GetSummit",
               "::GetFocus", "::GetDirectix", "Geometry::Get", "::MergeLineStrings", "LineString2D::GetPoint",
               "LineString3D::GetPoint", "::Extract", "Line2D::ComputeTangent", "Line3D::ComputeTangent"});
    Require(!isNone || after == before || tells, name, 2);
    Require(!isSome || after == before || !IsFinite(before) || IsFinite(after) || isPlain, name, 3);
}

template <class Result, class Call>
std::tuple<std::string, bool, bool> AnswerOf(const Call& call) {
    if constexpr (std::is_void_v<Result>) {
        call();
        return {"", false, false};
    } else if constexpr (std::is_pointer_v<Result> && !std::is_const_v<std::remove_pointer_t<Result>>) {
        return {Text(std::unique_ptr<std::remove_pointer_t<Result>>(call())), false, false};
    } else if constexpr (std::is_same_v<Result, bool>) {
        const bool isSome = call();
        return {Text(isSome), !isSome, isSome};
    } else if constexpr (std::is_same_v<Result, IntersectionResult>) {
        const IntersectionResult result = call();
        const bool isSome = result == IntersectionResult::Intersecting;
        return {Text(result), !isSome && result != IntersectionResult::Coincident, isSome};
    } else {
        return {Text(call()), false, false};
    }
}

/// Which of the functions of a name is meant.
struct Asking;
struct Changing;
template <class Object, class Kind, class... As>
struct Pick {
    using Class = Object;
    template <class Result, class Base>
    constexpr auto operator()(Result (Base::*function)(As...) const) const requires std::same_as<Kind, Asking> {
        return function;
    }
    template <class Result, class Base>
    constexpr auto operator()(Result (Base::*function)(As...)) const requires std::same_as<Kind, Changing> {
        return function;
    }
    template <class Result>
    constexpr auto operator()(Result (*function)(As...)) const requires std::same_as<Kind, Changing> {
        return function;
    }
};

template <class Object, class Result, class Class, class... As>
void Call(Bytes& bytes, const char* name, const Object& object, Result (Class::*member)(As...) const) {
    Ask<As...>(bytes, name, [&](As... as) {
        return AnswerOf<Result>([&]() -> Result { return (object.*member)(std::forward<As>(as)...); });
    });
}
template <class Object, class Result, class Class, class... As>
void Call(Bytes& bytes, const char* name, const Object& object, Result (Class::*member)(As...)) {
    Ask<As...>(bytes, name, [&](As... as) {
        Object changed(object);
        auto answer = AnswerOf<Result>([&]() -> Result { return (changed.*member)(std::forward<As>(as)...); });
        Require(!std::get<1>(answer) || Text(changed) == Text(object), name, 4);
        std::get<0>(answer) += Text(changed);
        return answer;
    });
}
template <class Result, class... As>
void Call(Bytes& bytes, const char* name, const auto&, Result (*function)(As...)) {
    Ask<As...>(bytes, name, [&](As... as) {
        return AnswerOf<Result>([&]() -> Result { return function(std::forward<As>(as)...); });
    });
}

/// Calls the function of an object of the class, a changing one of a copy, when it may be called.
/// @return whether it may
template <class Class, class Kind, class... As>
bool Try(Bytes bytes, const char* name, const auto& pick) {
    if constexpr (requires { pick(Pick<Class, Kind, As...>()); } && (canMake<As> && ...)) {
        const auto function = pick(Pick<Class, Kind, As...>());
        if constexpr (std::is_pointer_v<std::remove_const_t<decltype(function)>>) {
            Call(bytes, name, 0, function);
            return true;
        } else if constexpr (canMake<Class> && !std::is_abstract_v<Class>) {
            const auto object = Make<Class>(bytes);
            Call(bytes, name, object, function);
            return true;
        }
    }
    return false;
}

/// Calls those of a part of the exported functions: Calls.cmake writes them. @return their number
int CallPart0(const Bytes& bytes);
int CallPart1(const Bytes& bytes);
int CallPart2(const Bytes& bytes);
int CallPart3(const Bytes& bytes);

}  // namespace Kalvio::Math
