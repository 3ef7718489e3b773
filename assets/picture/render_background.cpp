// Renders background.png, the picture on the sign-in screen: the view of a laparoscope on the gallbladder under the
// liver, with two instruments. All objects are signed distance fields. Rays are marched from the tip of the
// laparoscope. As in the operating room, the light is next to the lens and becomes weaker with distance. The same
// options give the same bytes.
//
//   render-background OUTPUT [HEIGHT [SAMPLES]]

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "png_writer.h"

namespace {

struct Vec {
    float x = 0, y = 0, z = 0;
};
Vec operator+(Vec a, Vec b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
Vec operator-(Vec a, Vec b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
Vec operator*(Vec a, Vec b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}
Vec operator*(Vec a, float s) {
    return {a.x * s, a.y * s, a.z * s};
}
float dot(Vec a, Vec b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
float length(Vec a) {
    return std::sqrt(dot(a, a));
}
Vec normalize(Vec a) {
    return a * (1.0f / length(a));
}
Vec mix(Vec a, Vec b, float t) {
    return a + (b - a) * t;
}
float mix(float a, float b, float t) {
    return a + (b - a) * t;
}
float saturate(float v) {
    return std::clamp(v, 0.0f, 1.0f);
}
float smoothstep(float from, float to, float v) {
    const float t = saturate((v - from) / (to - from));
    return t * t * (3.0f - 2.0f * t);
}

// --- noise -----------------------------------------------------------------------------------------------------------

std::uint32_t hash(std::uint32_t v) {
    v = (v ^ 61u) ^ (v >> 16);
    v *= 9u;
    v ^= v >> 4;
    v *= 0x27d4eb2du;
    return v ^ (v >> 15);
}

float lattice(int x, int y, int z) {
    const std::uint32_t seed = static_cast<std::uint32_t>(x) * 73856093u ^ static_cast<std::uint32_t>(y) * 19349663u ^
                               static_cast<std::uint32_t>(z) * 83492791u;
    return static_cast<float>(hash(seed) >> 8) * (1.0f / 8388608.0f) - 1.0f;
}

// Returns value noise from -1 to 1.
float noise(Vec p) {
    const float fx = std::floor(p.x), fy = std::floor(p.y), fz = std::floor(p.z);
    const int x = static_cast<int>(fx), y = static_cast<int>(fy), z = static_cast<int>(fz);
    const auto fade = [](float t) { return t * t * t * (t * (t * 6.0f - 15.0f) + 10.0f); };
    const float u = fade(p.x - fx), v = fade(p.y - fy), w = fade(p.z - fz);
    const auto edge = [&](int dy, int dz) {
        return mix(lattice(x, y + dy, z + dz), lattice(x + 1, y + dy, z + dz), u);
    };
    return mix(mix(edge(0, 0), edge(1, 0), v), mix(edge(0, 1), edge(1, 1), v), w);
}

float fbm(Vec p, int octaves) {
    float sum = 0, weight = 0.5f;
    for (int i = 0; i < octaves; ++i, weight *= 0.5f) {
        sum += weight * noise(p);
        p = Vec{p.y * 2.03f + 1.7f, p.z * 2.03f - 3.1f, p.x * 2.03f + 5.3f};
    }
    return sum;
}

// Returns a pattern of thin branching lines: 1 on a vessel, 0 elsewhere.
float vessels(Vec p, float width) {
    const Vec warped =
        p + Vec{fbm(p * 0.9f, 3), fbm(p * 0.9f + Vec{7, 1, 3}, 3), fbm(p * 0.9f + Vec{2, 9, 5}, 3)} * 0.9f;
    const float wide = std::fabs(noise(warped * 0.55f));
    const float fine = std::fabs(noise(warped * 1.5f + Vec{11, 4, 8}));
    const float presence = smoothstep(-0.25f, 0.35f, noise(p * 0.4f + Vec{3, 3, 3}));
    const float thick = 1.0f - smoothstep(width * 0.3f, width, wide);
    const float thin = 0.6f * (1.0f - smoothstep(width * 0.3f, width * 1.1f, fine));
    return std::max(thick, thin) * presence;
}

// --- the scene -------------------------------------------------------------------------------------------------------

enum Material { Wall, Liver, Gallbladder, Fat, Bowel, Shaft, Steel };

struct Hit {
    float distance = 1e9f;
    Material material = Wall;
};

float smoothMin(float a, float b, float k) {
    const float h = std::max(k - std::fabs(a - b), 0.0f) / k;
    return std::min(a, b) - h * h * k * 0.25f;
}

float smoothMax(float a, float b, float k) {
    return -smoothMin(-a, -b, k);
}

float ellipsoid(Vec p, Vec centre, Vec radii) {
    const Vec q = p - centre;
    const Vec scaled{q.x / radii.x, q.y / radii.y, q.z / radii.z};
    const Vec twice{scaled.x / radii.x, scaled.y / radii.y, scaled.z / radii.z};
    const float k = length(scaled), slope = length(twice);
    return slope > 1e-6f ? k * (k - 1.0f) / slope : -std::min({radii.x, radii.y, radii.z});
}

// Returns the distance to a cone with round ends.
float roundCone(Vec p, Vec a, Vec b, float ra, float rb) {
    const Vec axis = b - a, q = p - a;
    const float t = saturate(dot(q, axis) / dot(axis, axis));
    return length(q - axis * t) - mix(ra, rb, t);
}

float liver(Vec p) {
    const float right = ellipsoid(p, {5.0f, 4.9f, 12.6f}, {7.6f, 4.4f, 4.8f});
    const float left = ellipsoid(p, {-4.9f, 5.5f, 13.6f}, {5.7f, 3.7f, 3.8f});
    // Cut both lobes flat at the bottom and the back, which gives the liver its sharp edge.
    const float rightCut =
        smoothMax(right, dot(p - Vec{4.6f, 0.75f, 9.0f}, normalize(Vec{-0.10f, -0.80f, 0.42f})), 0.55f);
    const float leftCut =
        smoothMax(left, dot(p - Vec{-4.4f, 2.0f, 10.6f}, normalize(Vec{0.18f, -0.80f, 0.40f})), 0.45f);
    return smoothMin(rightCut, leftCut, 0.7f) + 0.07f * noise(p * 0.7f);
}

float gallbladder(Vec p) {
    const float fundus = roundCone(p, {2.85f, -0.55f, 8.7f}, {2.2f, 0.35f, 10.0f}, 1.30f, 1.26f);
    const float body = roundCone(p, {2.2f, 0.35f, 10.0f}, {0.7f, 0.95f, 11.1f}, 1.18f, 0.66f);
    const float neck = roundCone(p, {0.7f, 0.95f, 11.1f}, {-0.65f, 0.4f, 11.4f}, 0.6f, 0.3f);
    const float duct = roundCone(p, {-0.65f, 0.4f, 11.4f}, {-2.6f, -0.6f, 12.4f}, 0.28f, 0.22f);
    return smoothMin(smoothMin(fundus, body, 1.6f), smoothMin(neck, duct, 0.5f), 0.8f) + 0.03f * noise(p * 1.3f);
}

float fat(Vec p) {
    const float floor = p.y + 4.35f + 0.06f * (p.z - 9.0f) + 0.8f * noise({p.x * 0.28f, 0, p.z * 0.28f});
    const float lumps = 0.40f * noise(p * 0.75f) + 0.16f * noise(p * 1.7f) + 0.03f * noise(p * 4.1f);
    const float apron = ellipsoid(p, {-1.9f, -1.5f, 12.6f}, {2.6f, 1.0f, 1.8f});
    return (smoothMin(floor, apron, 1.4f) - lumps) * 0.72f;
}

float bowel(Vec p) {
    const auto loop = [&](Vec centre, float radius, float tube, float tilt) {
        Vec q = p - centre;
        q = {q.x * std::cos(tilt) - q.y * std::sin(tilt), q.x * std::sin(tilt) + q.y * std::cos(tilt), q.z};
        const float ring = std::sqrt(q.x * q.x + q.z * q.z) - radius;
        const float fold = 0.05f * std::sin(std::atan2(q.z, q.x) * 14.0f * radius / 3.0f);
        return std::sqrt(ring * ring + q.y * q.y) - tube - fold;
    };
    return smoothMin(loop({-5.6f, -4.1f, 13.2f}, 4.6f, 1.15f, 0.20f), loop({7.2f, -4.7f, 13.4f}, 4.8f, 1.2f, -0.16f),
                     0.3f);
}

float wall(Vec p) {
    const float room = 15.5f - length(p - Vec{0, 0.5f, 4.0f});
    return room + 0.5f * noise(p * 0.22f) + 0.12f * noise(p * 0.7f);
}

// Adds an instrument to the scene: a shaft with a hinge and two jaws at `tip`.
void instrument(Vec p, Vec from, Vec tip, float opening, float roll, Hit& hit) {
    const Vec axis = normalize(tip - from);
    const Vec hinge = tip - axis * 1.35f;
    const auto take = [&](float distance, Material material) {
        if (distance < hit.distance) hit = {distance, material};
    };
    if (roundCone(p, from, tip, 0.5f, 0.6f) > 2.2f) return take(roundCone(p, from, tip, 0.5f, 0.6f), Shaft); // far away
    const float reach = dot(p - from, axis), end = dot(hinge - axis * 0.55f - from, axis);
    const Vec offAxis = p - from - axis * reach;
    const float radius = 0.215f - 0.012f * smoothstep(0.02f, 0.0f, std::fabs(end - 0.35f - reach) - 0.03f);
    take(std::max(length(offAxis) - radius, std::max(reach - end, -reach)) * 0.95f, Shaft);
    take(roundCone(p, hinge - axis * 0.6f, hinge, 0.165f, 0.15f), Steel);

    const Vec side = normalize(Vec{axis.y, -axis.x, 0.0f});
    const Vec up{axis.y * side.z - axis.z * side.y, axis.z * side.x - axis.x * side.z,
                 axis.x * side.y - axis.y * side.x};
    const Vec swing = side * std::cos(roll) + up * std::sin(roll);
    const Vec across = up * std::cos(roll) - side * std::sin(roll);
    for (const float sign : {-1.0f, 1.0f}) {
        const Vec direction = normalize(axis * std::cos(opening) + swing * (sign * std::sin(opening)));
        const Vec normal = normalize(swing * std::cos(opening) - axis * (sign * std::sin(opening)));
        const Vec q = p - hinge;
        const float along = dot(q, direction), thickness = dot(q, normal) * sign, width = dot(q, across);
        const float bend = thickness - 0.05f * along * (1.35f - along); // curved outwards; the tips meet
        const float taper = mix(0.15f, 0.085f, saturate(along / 1.35f));
        const float teeth = bend < 0.03f ? 0.012f * std::sin(along * 40.0f) : 0.0f;
        const Vec box{std::max(std::fabs(along - 0.68f) - 0.66f, 0.0f), std::max(std::fabs(bend) - 0.035f, 0.0f),
                      std::max(std::fabs(width) - taper, 0.0f)};
        take((length(box) - 0.035f + teeth) * 0.8f, Steel);
    }
}

Hit scene(Vec p) {
    Hit hit;
    const auto take = [&](float distance, Material material) {
        if (distance < hit.distance) hit = {distance, material};
    };
    take(wall(p), Wall);
    take(fat(p), Fat);
    take(bowel(p), Bowel);
    take(liver(p), Liver);
    take(gallbladder(p), Gallbladder);
    instrument(p, {-9.0f, -2.4f, 4.4f}, {0.55f, 0.05f, 10.35f}, 0.20f, 0.6f, hit);
    instrument(p, {9.4f, -2.9f, 4.4f}, {4.0f, -0.75f, 8.25f}, 0.12f, 1.2f, hit);
    return hit;
}

Vec normalAt(Vec p) {
    constexpr float e = 0.004f;
    const std::array<Vec, 4> corners = {{{1, -1, -1}, {-1, -1, 1}, {-1, 1, -1}, {1, 1, 1}}};
    Vec sum;
    for (const Vec& corner : corners)
        sum = sum + corner * scene(p + corner * e).distance;
    return normalize(sum);
}

// --- light and matter ------------------------------------------------------------------------------------------------

struct Surface {
    Vec colour;
    Vec scatter; // how far light of each colour reaches around an edge, because of scattering under the surface
    float roughness;
    float coat;  // strength of the wet film
    float bumps; // strength of the film's bumps
    float metal = 0.0f;
};

Surface surfaceAt(Vec p, Material material) {
    switch (material) {
    case Liver: {
        const float lobules = fbm(p * 5.0f, 3);
        const Vec colour = mix({0.165f, 0.042f, 0.031f}, {0.225f, 0.063f, 0.043f}, saturate(0.5f + lobules));
        return {mix(colour, {0.27f, 0.092f, 0.066f}, 0.5f * saturate(fbm(p * 0.8f, 3))),
                {0.30f, 0.08f, 0.06f},
                0.22f,
                1.0f,
                0.028f};
    }
    case Gallbladder: {
        const float patches = saturate(0.5f + 0.9f * fbm(p * 0.9f + Vec{4, 2, 9}, 3));
        Vec colour = mix({0.095f, 0.155f, 0.125f}, {0.235f, 0.265f, 0.185f}, patches);
        const float toNeck = smoothstep(9.6f, 11.4f, p.z);
        colour = mix(colour, {0.50f, 0.33f, 0.22f}, 0.75f * toNeck);
        colour = mix(colour, {0.33f, 0.075f, 0.058f}, 0.7f * vessels(p * 1.05f + Vec{2, 0, 4}, 0.045f));
        return {colour, {0.34f, 0.24f, 0.20f}, 0.21f, 1.5f, 0.030f};
    }
    case Fat: {
        const float tint = saturate(0.5f + fbm(p * 1.2f, 3));
        Vec colour = mix({0.46f, 0.245f, 0.065f}, {0.60f, 0.38f, 0.125f}, tint);
        colour = mix(colour, {0.62f, 0.20f, 0.12f}, 0.65f * vessels(p * 0.9f + Vec{5, 0, 2}, 0.05f));
        return {colour, {0.45f, 0.30f, 0.12f}, 0.24f, 0.75f, 0.08f};
    }
    case Bowel: {
        Vec colour = mix({0.40f, 0.18f, 0.135f}, {0.50f, 0.25f, 0.185f}, saturate(0.5f + fbm(p * 0.8f, 3)));
        colour = mix(colour, {0.55f, 0.13f, 0.12f}, 0.6f * vessels(p * 1.2f + Vec{1, 6, 2}, 0.05f));
        return {colour, {0.42f, 0.20f, 0.16f}, 0.20f, 0.9f, 0.05f};
    }
    case Shaft:
        return {{0.018f, 0.019f, 0.022f}, {0, 0, 0}, 0.36f, 0.8f, 0.0f};
    case Steel:
        return {{0.62f, 0.64f, 0.66f}, {0, 0, 0}, 0.26f, 1.0f, 0.01f, 1.0f};
    case Wall:
        break;
    }
    Vec colour = mix({0.30f, 0.085f, 0.065f}, {0.40f, 0.145f, 0.105f}, saturate(0.5f + fbm(p * 0.5f, 3)));
    colour = mix(colour, {0.42f, 0.08f, 0.07f}, 0.6f * vessels(p * 0.5f, 0.06f));
    return {colour, {0.35f, 0.14f, 0.12f}, 0.34f, 0.6f, 0.025f};
}

float shadow(Vec p, Vec toLight, float distance, float softness) {
    float light = 1.0f;
    for (float t = 0.06f; t < distance;) {
        const float clearance = scene(p + toLight * t).distance;
        light = std::min(light, 0.5f + 0.5f * clearance * softness / t);
        if (light < 0.02f) return 0.0f;
        t += std::clamp(clearance, 0.04f, 0.9f);
    }
    return smoothstep(0.0f, 1.0f, light);
}

float openness(Vec p, Vec normal) {
    float closed = 0.0f, weight = 1.0f;
    for (const float reach : {0.12f, 0.3f, 0.6f, 1.1f}) {
        closed += weight * std::max(0.0f, reach - scene(p + normal * reach).distance) / reach;
        weight *= 0.7f;
    }
    return saturate(1.0f - 0.42f * closed);
}

float glint(Vec normal, Vec toEye, Vec toLight, float roughness) {
    const Vec half = normalize(toEye + toLight);
    const float nh = saturate(dot(normal, half)), nl = saturate(dot(normal, toLight)),
                nv = saturate(dot(normal, toEye));
    const float a2 = roughness * roughness * roughness * roughness;
    const float d = nh * nh * (a2 - 1.0f) + 1.0f;
    const float distribution = a2 / (3.14159f * d * d);
    const float k = (roughness + 1.0f) * (roughness + 1.0f) / 8.0f;
    const float visible = 1.0f / ((nl * (1 - k) + k) * (nv * (1 - k) + k) * 4.0f);
    return distribution * visible * nl;
}

constexpr std::array<Vec, 2> kLights = {{{0.42f, 0.30f, 0.0f}, {-0.42f, 0.22f, 0.0f}}}; // next to the lens
constexpr float kLit = 10.0f; // the distance at which the light has the strength 1
const Vec kLampColour{1.0f, 0.965f, 0.90f};
const Vec kBounce{0.16f, 0.075f, 0.058f}; // light that the red walls reflect into shadows

Vec shade(Vec p, Vec toEye, Material material) {
    const Surface surface = surfaceAt(p, material);
    const Vec normal = normalAt(p);
    Vec film = normal;
    if (surface.bumps > 0.0f) {
        const auto wave = [&](Vec q) { return fbm(q * 2.6f, 3) + 0.12f * noise(q * 13.0f); };
        const float here = wave(p);
        constexpr float e = 0.02f;
        const Vec slope{wave(p + Vec{e, 0, 0}) - here, wave(p + Vec{0, e, 0}) - here, wave(p + Vec{0, 0, e}) - here};
        film = normalize(normal - slope * (surface.bumps / e));
    }
    const float open = openness(p, normal);
    const float facing = saturate(dot(normal, toEye));
    Vec light = kBounce * (open * 0.9f);
    Vec shine;
    for (const Vec& lamp : kLights) {
        const Vec path = lamp - p;
        const float distance = length(path);
        const Vec toLight = path * (1.0f / distance);
        const float fall = kLit * kLit / (distance * distance) * 0.5f;
        const float lit = shadow(p + normal * 0.02f, toLight, distance, 14.0f) * fall;
        const float cosine = dot(normal, toLight);
        const auto wrapped = [&](float wrap) { return std::max(0.0f, (cosine + wrap) / ((1 + wrap) * (1 + wrap))); };
        light = light + kLampColour *
                            Vec{wrapped(surface.scatter.x), wrapped(surface.scatter.y), wrapped(surface.scatter.z)} *
                            (lit * mix(0.55f, 1.0f, open));
        const float fresnel = surface.metal > 0 ? 0.85f : 0.035f + 0.5f * std::pow(1.0f - facing, 5.0f);
        shine = shine + kLampColour * (lit * fresnel * surface.coat * glint(film, toEye, toLight, surface.roughness));
    }
    // Add the reflection in the wet film: bright in the direction of the laparoscope, red in other directions.
    const Vec mirrored = film * (2.0f * dot(film, toEye)) - toEye;
    const float towards = saturate(dot(mirrored, toEye));
    const Vec room = mix({0.10f, 0.030f, 0.024f}, {0.42f, 0.33f, 0.28f}, towards * towards * towards);
    const float mirror = surface.metal > 0 ? 0.85f : (0.03f + 0.45f * std::pow(1.0f - facing, 4.0f)) * surface.coat;
    shine = shine + room * (mirror * open);
    return surface.metal > 0 ? surface.colour * shine + surface.colour * light * 0.06f : surface.colour * light + shine;
}

Vec trace(Vec origin, Vec direction) {
    float t = 2.0f;
    for (int step = 0; step < 160 && t < 24.0f; ++step) {
        const Hit hit = scene(origin + direction * t);
        if (hit.distance < 0.0012f * t) {
            const Vec colour = shade(origin + direction * t, direction * -1.0f, hit.material);
            const float haze = 1.0f - std::exp(-std::max(0.0f, t - 8.0f) * 0.030f);
            return mix(colour, {0.085f, 0.048f, 0.042f}, haze);
        }
        t += hit.distance * 0.9f;
    }
    return {0.03f, 0.012f, 0.01f};
}

// --- the camera ------------------------------------------------------------------------------------------------------

constexpr float kAspect = 1.5f;
constexpr float kCentreX = 0.585f, kCentreY = 0.47f; // centre of the circular image, as fractions of width and height
constexpr float kReach = 0.62f;                      // tangent of half the vertical angle of view

float film(float v) { // applies a filmic tone curve, then the screen's gamma
    v *= 0.95f;
    v = v * (2.51f * v + 0.03f) / (v * (2.43f * v + 0.59f) + 0.14f);
    v = saturate(v);
    return v <= 0.0031308f ? 12.92f * v : 1.055f * std::pow(v, 1.0f / 2.4f) - 0.055f;
}

class Picture {
  public:
    Picture(int height, int samples)
        : height_(height)
        , width_(static_cast<int>(std::lround(static_cast<float>(height) * kAspect)))
        , samples_(samples)
        , pixels_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * 3) {}

    void render() {
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i) {
            threads.emplace_back([this] {
                for (int row; (row = next_++) < height_;)
                    for (int column = 0; column < width_; ++column)
                        pixel(column, row);
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    }

    bool write(const char* path) const { return writePng(path, width_, height_, pixels_); }

  private:
    void pixel(int column, int row) {
        Vec sum;
        for (int sample = 0; sample < samples_; ++sample) {
            // Use a low-discrepancy sequence for the samples, with another random offset for each pixel.
            const std::uint32_t turn = hash(static_cast<std::uint32_t>(row * width_ + column));
            const float jitter = static_cast<float>(turn >> 8) * (1.0f / 16777216.0f);
            const float number = static_cast<float>(sample);
            const float dx = std::fmod(jitter + number * 0.754877666f, 1.0f);
            const float dy = std::fmod(jitter * 7.13f + number * 0.569840291f, 1.0f);
            sum = sum + colourAt((static_cast<float>(column) + dx) / static_cast<float>(width_),
                                 (static_cast<float>(row) + dy) / static_cast<float>(height_));
        }
        const Vec mean = sum * (1.0f / static_cast<float>(samples_));
        const std::size_t at =
            (static_cast<std::size_t>(row) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(column)) * 3;
        const std::array<float, 3> channels = {mean.x, mean.y, mean.z};
        for (std::size_t i = 0; i < 3; ++i)
            pixels_[at + i] = static_cast<std::uint8_t>(std::lround(channels[i] * 255.0f));
    }

    // Returns the colour in the screen's encoding. The samples are averaged in this encoding, so that bright highlights
    // do not make edges jagged.
    Vec colourAt(float x, float y) const {
        const float u = (x - kCentreX) * kAspect * 2.0f, v = (kCentreY - y) * 2.0f;
        const float fromCentre = std::sqrt(u * u + v * v);
        const float vignette = 1.0f - 0.96f * smoothstep(0.62f, 1.32f, fromCentre);
        const float captioned = 1.0f - 0.55f * smoothstep(0.66f, 0.96f, y); // dark below the light caption
        const float bulge = 1.0f + 0.06f * fromCentre * fromCentre;         // barrel distortion of the lens
        const Vec direction = normalize({u * kReach * bulge + 0.19f, v * kReach * bulge, 1.0f});
        const Vec colour = trace({}, direction) * (vignette * captioned);
        const Vec floor{0.010f, 0.011f, 0.014f}; // minimum colour, from the theme: never completely black
        const Vec shown = colour + floor;
        return {film(shown.x), film(shown.y), film(shown.z)};
    }

    int height_, width_, samples_;
    std::vector<std::uint8_t> pixels_;
    std::atomic<int> next_ = 0;
};

} // namespace

int main(int count, char** values) {
    if (count < 2) {
        std::fputs("usage: render-background OUTPUT [HEIGHT [SAMPLES]]\n", stderr);
        return 2;
    }
    Picture picture(count > 2 ? std::atoi(values[2]) : 1600, count > 3 ? std::atoi(values[3]) : 8);
    picture.render();
    return picture.write(values[1]) ? 0 : 1;
}
