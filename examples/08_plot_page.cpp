// A page of eight plots in one figure, written as PNG, SVG and PDF.
//
// M source (plot_page.m):
//
//   figure('Position', [0 0 1200 800]);
//   x = linspace(0, 2*pi, 200);
//   subplot(2,4,1); plot(x, sin(x), x, cos(x), '--'); title('sin and cos'); xlabel('x');
//                   legend('sin', 'cos'); grid on
//   subplot(2,4,2); semilogy(1:10, exp(1:10), 'o-'); title('growth'); ylabel('e^n')
//   subplot(2,4,3); bar([3 5 2 6 4]); title('bar')
//   subplot(2,4,4); stem(0:0.5:6, sin(0:0.5:6)); hold on; stairs(0:0.5:6, cos(0:0.5:6), 'r'); title('stem and stairs')
//   [xx, yy] = meshgrid(linspace(-3, 3, 40));
//   zz = 3*(1-xx).^2.*exp(-xx.^2-(yy+1).^2) - 10*(xx/5-xx.^3-yy.^5).*exp(-xx.^2-yy.^2) - exp(-(xx+1).^2-yy.^2)/3;
//   subplot(2,4,5); surf(xx, yy, zz); title('surf')
//   subplot(2,4,6); contourf(xx, yy, zz, 8); title('contourf'); colorbar
//   subplot(2,4,7); pie([30 20 25 25]); title('pie')
//   subplot(2,4,8); hist(randn(1000,1), 20); title('hist of randn')
//   print('-dpng', 'plot_page.png'); print('-dsvg', 'plot_page.svg'); print('-dpdf', 'plot_page.pdf');
#include <cmath>
#include <unistd.h>

#include "arklib.h"

namespace {

// The row v(1), ..., v(n) of f at n points from a to b.
Mm sampled(double a, double b, int n, double (*f)(double)) {
    Mm out(0, 0, 0, 1, n, ak_double);
    for (int k = 0; k < n; ++k) out.addr()[k] = f(a + (b - a) * k / (n - 1));
    return out;
}

double same(double t) { return t; }

// The classic test surface of two peaks and a pit.
Mm peaks_like(const Mm& xx, const Mm& yy) {
    Mm z(0, 0, 0, xx.rows(), xx.cols(), ak_double);
    for (int k = 0; k < z.size(); ++k) {
        double x = xx.addr()[k], y = yy.addr()[k];
        z.addr()[k] = 3 * (1 - x) * (1 - x) * std::exp(-x * x - (y + 1) * (y + 1)) -
                      10 * (x / 5 - x * x * x - std::pow(y, 5)) * std::exp(-x * x - y * y) -
                      std::exp(-(x + 1) * (x + 1) - y * y) / 3;
    }
    return z;
}

}  // namespace

int main() {
    initM();
    Mm page = (BR(0.0), 0.0, 1200.0, 800.0);
    figure((CL("Position"), page));
    Mm x = sampled(0, 2 * M_PI, 200, same);

    subplot(2, 4, 1);
    plot((CL(x), sin(x), x, cos(x), "--"));
    title(TM("sin and cos"));
    xlabel(TM("x"));
    legend((CL("sin"), "cos"));
    grid(TM("on"));

    subplot(2, 4, 2);
    Mm n = colon(1.0, 10.0);
    semilogy((CL(n), exp(n), "o-"));
    title(TM("growth"));
    ylabel(TM("e^n"));

    subplot(2, 4, 3);
    bar(Mm((BR(3.0), 5.0, 2.0, 6.0, 4.0)));
    title(TM("bar"));

    subplot(2, 4, 4);
    Mm t = colon(0.0, 0.5, 6.0);
    stem((CL(t), sin(t)));
    hold(TM("on"));
    stairs((CL(t), cos(t), "r"));
    title(TM("stem and stairs"));

    Mm yy, xx = meshgrid(linspace(-3.0, 3.0, 40.0), i_o, yy);
    Mm zz = peaks_like(xx, yy);
    subplot(2, 4, 5);
    surf((CL(xx), yy, zz));
    title(TM("surf"));

    subplot(2, 4, 6);
    contourf((CL(xx), yy, zz, 8.0));
    title(TM("contourf"));
    colorbar();

    subplot(2, 4, 7);
    pie(Mm((BR(30.0), 20.0, 25.0, 25.0)));
    title(TM("pie"));

    subplot(2, 4, 8);
    hist(randn(1000.0, 1.0), Mm(20.0));
    title(TM("hist of randn"));

    char dir[1024];
    const char* here = getcwd(dir, sizeof dir) ? dir : ".";
    for (const char* file : {"plot_page.png", "plot_page.svg", "plot_page.pdf"}) {
        print((CL("-d"), file));
        ak_printf("plot page written to %s/%s\n", here, file);
    }
    exitM();
    return 0;
}
