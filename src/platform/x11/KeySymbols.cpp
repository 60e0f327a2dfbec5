#include "KeySymbols.h"

#include <QHash>
#include <X11/keysym.h>

namespace KeySymbols {

std::optional<xcb_keysym_t> forKeyCode(quint16 keyCode)
{
    static const QHash<quint16, xcb_keysym_t> table = {
        {0, XK_a},
        {1, XK_s},
        {2, XK_d},
        {3, XK_f},
        {4, XK_h},
        {5, XK_g},
        {6, XK_z},
        {7, XK_x},
        {8, XK_c},
        {9, XK_v},
        {11, XK_b},
        {12, XK_q},
        {13, XK_w},
        {14, XK_e},
        {15, XK_r},
        {16, XK_y},
        {17, XK_t},
        {31, XK_o},
        {32, XK_u},
        {34, XK_i},
        {35, XK_p},
        {37, XK_l},
        {38, XK_j},
        {40, XK_k},
        {45, XK_n},
        {46, XK_m},
        {18, XK_1},
        {19, XK_2},
        {20, XK_3},
        {21, XK_4},
        {22, XK_6},
        {23, XK_5},
        {25, XK_9},
        {26, XK_7},
        {28, XK_8},
        {29, XK_0},
        {24, XK_equal},
        {27, XK_minus},
        {30, XK_bracketright},
        {33, XK_bracketleft},
        {39, XK_apostrophe},
        {41, XK_semicolon},
        {42, XK_backslash},
        {43, XK_comma},
        {44, XK_slash},
        {47, XK_period},
        {50, XK_grave},
        {36, XK_Return},
        {48, XK_Tab},
        {49, XK_space},
        {51, XK_BackSpace},
        {53, XK_Escape},
        {117, XK_Delete},
        {115, XK_Home},
        {119, XK_End},
        {116, XK_Prior},
        {121, XK_Next},
        {123, XK_Left},
        {124, XK_Right},
        {125, XK_Down},
        {126, XK_Up},
        {122, XK_F1},
        {120, XK_F2},
        {99, XK_F3},
        {118, XK_F4},
        {96, XK_F5},
        {97, XK_F6},
        {98, XK_F7},
        {100, XK_F8},
        {101, XK_F9},
        {109, XK_F10},
        {103, XK_F11},
        {111, XK_F12},
    };
    const auto it = table.constFind(keyCode);
    if (it == table.constEnd())
        return std::nullopt;
    return it.value();
}

} // namespace KeySymbols
